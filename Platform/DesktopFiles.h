#pragma once
// The desktop entries of installed applications: the files that say what an application is called and which
// program it starts. Empty where applications are bundles. From any thread: nothing is kept between calls.
// read() may take milliseconds, stamp() microseconds.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct DesktopFile {
  std::string id;   ///< "org.gnome.Terminal": the path below its applications folder, "/" as "-", no ending
  std::string path; ///< absolute
  std::string text; ///< as it stands
};

class DesktopFiles {
public:
  virtual ~DesktopFiles() = default;
  /// Another value once an entry was added or removed.
  virtual std::uint64_t stamp() = 0;
  /// Of several entries with one id only the first in the order of the folders.
  virtual std::vector<DesktopFile> read() = 0;
  /// Where the program really is, links followed: by its absolute path, or by its name in the folders of
  /// PATH. Nothing when there is none.
  virtual std::optional<std::string> realProgram(const std::string& program) = 0;
};

} // namespace korvell
