#pragma once
// user-dirs.dirs, in which a freedesktop desktop names the user's folders: lines of the form
// XDG_DOWNLOAD_DIR="$HOME/Downloads", where the value is absolute or begins with $HOME and a backslash takes
// the next character as it is.

#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// The folder of that name ("DOWNLOAD"), without a trailing slash; of several lines the last. Nothing when no
/// line that keeps to the form names it.
std::optional<std::string> userDirectory(std::string_view text, std::string_view name,
                                         const std::string& home);

} // namespace korvell
