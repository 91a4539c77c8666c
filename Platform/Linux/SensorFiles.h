#pragma once
// The few things that reading sensors does with sysfs, each one call, so that tests can have them fail, take
// long and be counted. From any thread.

#include <span>
#include <string>
#include <vector>

namespace korvell {

class SensorFiles {
public:
  virtual ~SensorFiles() = default;
  /// Opens, reads once and closes: an attribute is handed out whole by one reading. How many bytes came, or
  /// the negative number of the error.
  virtual int read(const std::string& path, std::span<char> into);
  /// The names in a folder as people count; empty when it can't be read.
  virtual std::vector<std::string> names(const std::string& folder);
  /// The last part of where a link leads; empty for what is no link.
  virtual std::string linkName(const std::string& path);

  /// A short text, trimmed; empty when it can't be read.
  std::string text(const std::string& path);
};

} // namespace korvell
