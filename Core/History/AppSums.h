#pragma once
// Adds up one column of the application rows by application.
//
// Over thirty days "SUM … GROUP BY app" sorts 1.3 million rows and takes half a second; reading each row from
// SQLite's page straight into a hash table takes a fifth of that. Whole hours come from a table of their sums
// instead, sixty times shorter. It is derived and never the truth: triggers drop an hour's mark when one of
// its rows changes, whoever changes it, and what is not marked is added up from the rows.

#include "Base/SQLite.h"
#include "Core/History/HistoryTypes.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace korvell {

/// Makes the aggregate function known to a connection; false when SQLite refuses.
bool registerAppSums(Database& database);

struct AppSumsAnswer {
  int code = 0;               ///< SQLite's: 100 (SQLITE_ROW) on success
  std::vector<AppTotal> sums; ///< the largest first, equal ones by application; at most `limit`
};

/// `column` is one of the value columns' names.
AppSumsAnswer sumByApp(Database& database, std::string_view column, HistoryPeriod period, std::size_t limit);

/// The table of the hours' sums, made where it is missing; only for a connection that writes. SQLite's code.
int makeHourSums(Database& database);
/// Adds up some of the whole hours before that minute that have no sums, the newest first: a long history
/// takes several calls. True when there may be more; nothing when SQLite refused.
std::optional<bool> addHourSums(Database& database, std::int64_t minute);
/// Forgets the sums of hours that have expired.
int expireHourSums(Database& database);

} // namespace korvell
