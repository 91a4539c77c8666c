#pragma once
// Log files as another program writes them: finding them and reading them while they grow, shrink or vanish.
//
// Paths are absolute and may hold any bytes. Nothing is ever written. From any thread.

#include "Base/Date.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct LogFile {
  std::string path;
  std::int64_t size = 0; ///< bytes
  Date modified;         ///< whole seconds
};

class OpenLog {
public:
  virtual ~OpenLog() = default;
  /// Bytes read into `buffer` from that place in the file; 0 at its end, negative when it can't be read. May
  /// be fewer than asked for.
  virtual std::int64_t read(char* buffer, std::size_t size, std::int64_t offset) = 0;
};

class LogFiles {
public:
  virtual ~LogFiles() = default;
  /// The regular files below a folder whose names end in "." and the extension, hidden ones included, in the
  /// order of their names, folder by folder. Links are not followed, except `root` itself. What can't be
  /// read is left out.
  virtual std::vector<LogFile> list(const std::string& root, std::string_view extension) = 0;
  /// Nothing when the path is no regular file any more or can't be read.
  virtual std::unique_ptr<OpenLog> open(const std::string& path) = 0;
};

} // namespace korvell
