#pragma once
// Programs of the user's desktop that Korvell opens: a terminal with a command in it, the power settings.

#include "Base/UserFolders.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct DesktopProgram {
  std::string program; ///< absolute path
  std::vector<std::string> arguments;

  /// Starts it in a session of its own: it outlives the caller.
  void open() const;
  bool operator==(const DesktopProgram&) const = default;
};

/// Where programs are looked for.
inline const std::vector<std::string> programFolders = {"/usr/local/bin", "/usr/bin", "/bin"};

/// The user's choice where the system knows one, else a terminal that is installed in one of the folders.
/// Nothing without a desktop to show it on.
std::optional<DesktopProgram> terminalWindow(const std::vector<std::string>& command,
                                             const Environment& environment,
                                             const std::vector<std::string>& folders = programFolders);

/// The page of the desktop's own settings that is about power and the battery; nothing on a desktop that has
/// none, or where it is not installed.
std::optional<DesktopProgram> powerSettings(const Environment& environment,
                                            const std::vector<std::string>& folders = programFolders);

} // namespace korvell
