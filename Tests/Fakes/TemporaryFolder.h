#pragma once
// A folder for one test, removed with everything in it.

#include <cstdlib> // mkdtemp on Linux
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <unistd.h> // mkdtemp on macOS

namespace korvell {

class TemporaryFolder {
public:
  TemporaryFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "korvell-test-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("no temporary folder");
    path_ = std::filesystem::canonical(pattern);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(const std::string& name) const { return (path_ / name).string(); }
  /// Creates the file with its folders, or writes it anew in place.
  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << text;
  }

private:
  std::filesystem::path path_;
};

} // namespace korvell
