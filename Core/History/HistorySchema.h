#pragma once
// Whose tables a database has, and the retention of ours. Every call needs an open database and answers with
// SQLite's code where it can fail.

#include "Base/SQLite.h"

#include <string_view>

namespace korvell {

/// The schema, made where it is missing; safe on every opening.
extern const char* const historySchemaScript;
/// Eleven values: the minute, the application, its name and path, and the value columns.
inline constexpr std::string_view insertAppSQL = "INSERT INTO apps VALUES(?,?,?,?,?,?,?,?,?,?,?)";

enum class HistorySchema {
  ours,    ///< or nothing yet
  newer,   ///< ours with other columns beside, or marked with a version: to be read only
  foreign, ///< something else
};

/// `code` tells SQLite's when the tables could not be looked at.
HistorySchema historySchema(Database& database, int& code);

/// Whether our queries can read it; of a newer version's tables.
bool historyHasOurColumns(Database& database);

/// Deletes what is thirty days old, by the clock and by the newest minute whose date can be trusted. A minute
/// in the future can't be, nor can one after a gap of more than a day until minutes of seven days follow it:
/// a machine that rested for long and a clock that is far ahead look the same at first.
int deleteExpiredHistory(Database& database);

} // namespace korvell
