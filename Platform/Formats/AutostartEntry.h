#pragma once
// Korvell's own entry among those that a desktop starts at login.

#include <string>
#include <string_view>

namespace korvell {

/// False for one that somebody has switched off: the desktop's session settings or a text editor.
bool isAutostartEnabled(std::string_view entry);

/// How an entry is called where they are listed.
struct AutostartTitle {
  std::string_view name = "Korvell", comment = "Watches this computer's health";
};

/// The entry switched on, for a program by its absolute path, or off. Lines of others stay as they are; empty
/// text makes a new entry of that title.
std::string autostartEntry(std::string_view text, std::string_view program, bool enabled,
                           const AutostartTitle& title = {});

/// A path as the program of an Exec line: quoted and escaped, "%" doubled.
std::string desktopEntryWord(std::string_view path);

} // namespace korvell
