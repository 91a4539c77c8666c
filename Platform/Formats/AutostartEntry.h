#pragma once
// Korvell's own entry among those that a desktop starts at login.

#include <string>
#include <string_view>

namespace korvell {

/// False for one that somebody has switched off: the desktop's session settings or a text editor.
bool isAutostartEnabled(std::string_view entry);

/// The entry switched on, for a program by its absolute path, or off. Lines of others stay as they are; empty
/// text makes a new entry.
std::string autostartEntry(std::string_view text, std::string_view program, bool enabled);

/// A path as the program of an Exec line: quoted and escaped, "%" doubled.
std::string desktopEntryWord(std::string_view path);

} // namespace korvell
