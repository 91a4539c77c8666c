#pragma once
// What becomes of a database file that is damaged, and of one that no longer stands where it was opened.

#include "Base/Date.h"
#include "Base/SQLite.h"

namespace korvell {

/// SQLite's code says that a file is damaged, or no database at all.
bool meansDamage(int code);
/// The open file was deleted or renamed, or another one was put in its place.
bool hasMoved(const Database& database);
/// Renames a database and its logs to "NAME-damaged-2026-03-01-120000.sqlite" (UTC) in their folder, numbered
/// where that is taken. Returns the new path; nothing when it can't be renamed.
std::optional<std::string> moveAside(const std::string& path, Date now);

} // namespace korvell
