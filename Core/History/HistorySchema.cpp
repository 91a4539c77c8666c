#include "Core/History/HistorySchema.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>
#include <optional>
#include <span>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace korvell {

// The last statement serves databases from before the score; on all others it fails because the column is
// there, and nothing comes after it.
const char* const historySchemaScript =
    "PRAGMA journal_mode=WAL;\n"
    "CREATE TABLE IF NOT EXISTS system(ts INTEGER PRIMARY KEY, cpu REAL, memory REAL, disk REAL, network "
    "REAL, gpu REAL, energy REAL, disk_write REAL);\n"
    "CREATE TABLE IF NOT EXISTS apps(ts INTEGER, app TEXT, name TEXT, path TEXT, cpu REAL, memory REAL, disk "
    "REAL, network REAL, gpu REAL, energy REAL, disk_write REAL);\n"
    "CREATE INDEX IF NOT EXISTS apps_ts ON apps(ts);\n"
    "ALTER TABLE system ADD COLUMN score REAL;";

namespace {

using Columns = std::vector<std::string>;

const Columns systemColumns = {"ts",  "cpu",    "memory",     "disk", "network",
                               "gpu", "energy", "disk_write", "score"};
const Columns appColumns = {"ts",   "app",     "name", "path",   "cpu",       "memory",
                            "disk", "network", "gpu",  "energy", "disk_write"};

/// The first column of every row.
std::vector<std::string> texts(Database& database, std::string_view sql, int& code) {
  std::vector<std::string> result;
  Statement statement = database.prepare(sql);
  int step = statement ? statement.step() : database.lastErrorCode();
  for (; step == SQLITE_ROW; step = statement.step()) result.push_back(statement.text(0));
  if (step != SQLITE_DONE) code = step;
  return result;
}

bool holdsAll(std::span<const std::string> wanted, const Columns& columns) {
  return std::ranges::all_of(
      wanted, [&](const std::string& name) { return std::ranges::find(columns, name) != columns.end(); });
}

constexpr std::int64_t day = 86'400, window = 30 * day;
constexpr std::int64_t longestGap = day;
constexpr int provingDays = 7;

std::optional<std::int64_t> newestTrusted(Database& database, int& code) {
  Statement minutes = database.prepare(
      "SELECT ts FROM system WHERE ts <= CAST(strftime('%s','now') AS INTEGER) ORDER BY ts DESC");
  code = minutes.step();
  if (code != SQLITE_ROW) return std::nullopt;
  std::int64_t trusted = minutes.integer(0), later = trusted;
  for (int days = 1; days < provingDays && (code = minutes.step()) == SQLITE_ROW;) {
    const auto ts = minutes.integer(0);
    if (later - ts > longestGap) trusted = ts;
    if (ts / day != later / day) ++days;
    later = ts;
  }
  return trusted;
}

} // namespace

HistorySchema historySchema(Database& database, int& code) {
  code = SQLITE_OK;
  const auto tables = texts(database, "SELECT name FROM sqlite_master WHERE type = 'table'", code);
  if (tables.empty()) return HistorySchema::ours;
  const auto system = texts(database, "SELECT name FROM pragma_table_info('system')", code);
  const auto apps = texts(database, "SELECT name FROM pragma_table_info('apps')", code);
  const auto versions = texts(database, "PRAGMA user_version", code);
  // The first table of the schema is there as soon as any is; the score and the second one came later.
  const bool hasOurs = holdsAll(std::span(systemColumns).first(systemColumns.size() - 1), system) &&
                       (apps.empty() || holdsAll(appColumns, apps));
  const bool isMarked = !versions.empty() && versions.front() != "0";
  if (!hasOurs) return isMarked && !system.empty() ? HistorySchema::newer : HistorySchema::foreign;
  // Applications are inserted by the place of their columns.
  const bool isOurs = holdsAll(system, systemColumns) && (apps.empty() || apps == appColumns);
  return isOurs && !isMarked ? HistorySchema::ours : HistorySchema::newer;
}

bool historyHasOurColumns(Database& database) {
  return database.prepare(fmt::format("SELECT {} FROM system", fmt::join(systemColumns, ","))) &&
         database.prepare(fmt::format("SELECT {} FROM apps", fmt::join(appColumns, ",")));
}

int deleteExpiredHistory(Database& database) {
  int code = SQLITE_OK;
  const auto expired =
      texts(database,
            "SELECT 1 WHERE EXISTS(SELECT 1 FROM system WHERE ts < strftime('%s','now') - 2592000) OR "
            "EXISTS(SELECT 1 FROM apps WHERE ts < strftime('%s','now') - 2592000)",
            code);
  if (expired.empty()) return code;
  const auto newest = newestTrusted(database, code);
  if (!newest) return code;
  return database.exec(
      fmt::format("DELETE FROM system WHERE ts < strftime('%s','now') - 2592000 AND ts < {0};\n"
                  "DELETE FROM apps WHERE ts < strftime('%s','now') - 2592000 AND ts < {0};",
                  *newest - window)
          .c_str());
}

} // namespace korvell
