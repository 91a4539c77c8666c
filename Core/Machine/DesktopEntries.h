#pragma once
// The installed applications of a Linux desktop, found by the id of their desktop entry or by the program
// that a process runs. Read again when an entry was added or removed.

#include "Platform/DesktopFiles.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct DesktopEntry {
  std::string path;
  std::string name;           ///< in the user's language where the entry has it
  std::string program;        ///< what it starts, links followed; empty when there is no such program
  bool ownsItsProgram = true; ///< false where processes of that program need not be this application
};

class DesktopEntries {
public:
  /// `locale` as in "de_DE.UTF-8".
  DesktopEntries(DesktopFiles& files, std::string locale) : files_(files), locale_(std::move(locale)) {}

  /// Looks whether anything changed.
  void refresh();
  /// By "org.gimp.GIMP"; upper and lower case are told apart only when both exist.
  const DesktopEntry* byID(std::string_view id) const;
  /// The entry of a snap: the first whose id begins with its name and an underscore.
  const DesktopEntry* bySnap(std::string_view snap) const;
  /// The entry that starts this program, or in whose own install folder the program lies.
  const DesktopEntry* byProgram(std::string_view executable) const;
  /// The entry that is called so, upper and lower case alike; nothing when several are.
  const DesktopEntry* byName(std::string_view name) const;
  const DesktopEntry* byPath(std::string_view path) const;

private:
  DesktopFiles& files_;
  std::string locale_;
  std::optional<std::uint64_t> stamp_;
  std::map<std::string, DesktopEntry, std::less<>> byID_;
  std::map<std::string, const DesktopEntry*, std::less<>> byProgram_;
  std::map<std::string, const DesktopEntry*, std::less<>> byFolder_;
};

/// What an entry says; nothing when it is no application.
std::optional<DesktopEntry> parseDesktopEntry(const DesktopFile& file, std::string_view locale,
                                              DesktopFiles& programs);

/// The folder that an application has for itself, such as "/usr/lib/firefox-esr"; nothing when its program
/// lies in a folder that it shares with others.
std::optional<std::string> installFolder(std::string_view program);

} // namespace korvell
