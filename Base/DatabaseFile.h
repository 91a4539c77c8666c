#pragma once
// A database as a file: for its user only, what becomes of one that is damaged, and why one can't be written.

#include "Base/Date.h"
#include "Base/Enum.h"
#include "Base/SQLite.h"
#include "Base/Trouble.h"

namespace korvell {

/// Opens or creates a database that nobody but its user can read: whatever they had before, the file and its
/// logs get mode 0600, and the folder, which is made if need be, 0700. What belongs to somebody else stays as
/// it is.
Database openPrivateDatabase(const std::string& path, int* errorCode = nullptr);

/// Why a database can't be written. A damaged one is moved aside where that is possible.
enum class DatabaseFault { full, locked, newer, damaged, notAFile, danglingLink, denied, failing };

template <>
struct EnumTable<DatabaseFault> {
  using enum DatabaseFault;
  /// The titles are sentences.
  static constexpr EnumCase<DatabaseFault> cases[] = {
      {full, "full", "The disk that holds {path} is full."},
      {locked, "locked", "Another program keeps {path} locked."},
      {newer, "newer", "{path} is of a newer version of Korvell; this one leaves it as it is."},
      {damaged, "damaged", "{path} is damaged or holds something else."},
      {notAFile, "notAFile", "{path} is not a file."},
      {danglingLink, "danglingLink", "{path} is a link to something that is not there."},
      {denied, "denied", "Korvell may not write to {path}."},
      {failing, "failing", "Reading or writing {path} fails."}};
};

/// What SQLite's code means for the file, which is looked at too: a full disk has many codes.
DatabaseFault faultOf(const std::string& path, int code);
/// The fault in a sentence.
Trouble troubleOf(DatabaseFault fault, const std::string& path);
std::string sentence(DatabaseFault fault, const std::string& path); ///< its text

/// SQLite's code says that a file is damaged, or no database at all.
bool meansDamage(int code);
/// The open file was deleted or renamed, or another one was put in its place.
bool hasMoved(const Database& database);
/// Renames a file, and a database's logs with it, to "NAME-damaged-2026-03-01-120000.sqlite" (UTC) in their
/// folder, numbered where that is taken. Returns the new path; nothing when it can't be renamed.
std::optional<std::string> moveAside(const std::string& path, Date now);

} // namespace korvell
