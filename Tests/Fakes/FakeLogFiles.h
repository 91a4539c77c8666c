#pragma once
// A world of log files in memory that remembers which of them were opened.

#include "Platform/LogFiles.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <set>

namespace korvell {

class FakeLogFiles final : public LogFiles {
public:
  struct File {
    std::string text;
    Date modified;
    bool readable = true;
    std::int64_t listedSize = -1; ///< what list() claims; negative: the truth
  };

  std::map<std::string, File> files;
  std::size_t readLimit = SIZE_MAX; ///< bytes that one read hands out at most
  std::set<std::string> opened;

  std::vector<LogFile> list(const std::string& root, std::string_view extension) override {
    std::vector<LogFile> found;
    for (const auto& [path, file] : files)
      if (path.starts_with(root + "/") && path.ends_with("." + std::string(extension)))
        found.push_back(
            {path, file.listedSize < 0 ? std::int64_t(file.text.size()) : file.listedSize, file.modified});
    return found;
  }

  std::unique_ptr<OpenLog> open(const std::string& path) override {
    const std::scoped_lock lock(mutex_);
    opened.insert(path);
    const auto found = files.find(path);
    if (found == files.end() || !found->second.readable) return nullptr;
    return std::make_unique<Reader>(found->second, readLimit);
  }

private:
  struct Reader final : OpenLog {
    Reader(const File& file, std::size_t limit) : file(file), limit(limit) {}
    std::int64_t read(char* buffer, std::size_t size, std::int64_t offset) override {
      if (offset >= std::int64_t(file.text.size())) return 0;
      const auto part = std::string_view(file.text).substr(std::size_t(offset), std::min(size, limit));
      std::memcpy(buffer, part.data(), part.size());
      return std::int64_t(part.size());
    }
    const File& file;
    std::size_t limit;
  };
  std::mutex mutex_;
};

} // namespace korvell
