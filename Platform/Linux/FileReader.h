#pragma once
// Small files of the kernel's, read whole into one buffer that is used again and again. One thread at a time.
//
// A text that was handed out stands until the next reading through the same buffer.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

class FileReader {
public:
  FileReader() : buffer_(16 * 1024) {}

  /// Opens, reads to the end and closes. Nothing when the file can't be opened or read.
  std::optional<std::string_view> read(const std::string& path);
  /// Likewise for a file that stands open, from its beginning.
  std::optional<std::string_view> read(int descriptor);
  /// At most `bytes` from the beginning of a file that stands open: enough where only the first lines matter.
  std::optional<std::string_view> readBeginning(int descriptor, std::size_t bytes);

private:
  std::vector<char> buffer_;
};

/// A file that is read in every cycle and therefore stays open: half the price of opening it each time. One
/// that is not there is looked for at every reading.
class KeptFile {
public:
  explicit KeptFile(std::string path) : path_(std::move(path)) {}
  ~KeptFile() { close(); }
  KeptFile(const KeptFile&) = delete;
  KeptFile& operator=(const KeptFile&) = delete;

  std::optional<std::string_view> read(FileReader& reader);
  std::optional<std::string_view> readBeginning(FileReader& reader, std::size_t bytes);
  const std::string& path() const { return path_; }

private:
  bool open();
  void close();

  std::string path_;
  int descriptor_ = -1;
};

/// The names in a folder, sorted as people count ("card2" before "card10"); empty when it can't be read.
std::vector<std::string> folderNames(const std::string& path);
bool exists(const std::string& path);

} // namespace korvell
