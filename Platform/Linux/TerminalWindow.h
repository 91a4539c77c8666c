#pragma once
// A window of the user's terminal program with a command in it.

#include "Base/UserFolders.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct TerminalWindow {
  std::string program; ///< absolute path
  std::vector<std::string> arguments;

  /// The user's choice where the system knows one, else a terminal that is installed in one of the folders.
  /// Nothing without a desktop to show it on.
  static std::optional<TerminalWindow>
  with(const std::vector<std::string>& command, const Environment& environment,
       const std::vector<std::string>& folders = {"/usr/local/bin", "/usr/bin", "/bin"});
  /// Opens it. It outlives the caller.
  void open() const;
};

} // namespace korvell
