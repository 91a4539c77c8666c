#pragma once
// A folder for one test, removed with everything in it.

#include "Base/Files.h"

#include <algorithm>
#include <cstdlib> // mkdtemp on Linux
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h> // mkdtemp on macOS
#include <vector>

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
  void write(const std::string& name, std::string_view text) const {
    std::filesystem::create_directories((path_ / name).parent_path());
    std::ofstream(path_ / name, std::ios::binary) << text;
  }
  std::string text(const std::string& name) const {
    return readFile(*this / name, 1 << 20).value_or("(no file)");
  }
  /// The names in a folder, sorted.
  std::vector<std::string> names(const std::string& name) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_ / name))
      names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
  }
  /// The permission bits; 0 where there is nothing.
  mode_t permissions(const std::string& name) const {
    struct stat info {};
    return stat((*this / name).c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
  }

private:
  std::filesystem::path path_;
};

} // namespace korvell
