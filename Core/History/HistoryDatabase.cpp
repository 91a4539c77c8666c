#include "Core/History/HistoryDatabase.h"

#include "Base/DatabaseFile.h"
#include "Base/UserFolders.h"
#include "Core/History/AppSums.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <sqlite3.h>

namespace korvell {

namespace {

// The last statement serves databases from before the score; on all others it fails because the column is
// there, and nothing comes after it.
constexpr const char* schemaScript =
    "PRAGMA journal_mode=WAL;\n"
    "CREATE TABLE IF NOT EXISTS system(ts INTEGER PRIMARY KEY, cpu REAL, memory REAL, disk REAL, network "
    "REAL, gpu REAL, energy REAL, disk_write REAL);\n"
    "CREATE TABLE IF NOT EXISTS apps(ts INTEGER, app TEXT, name TEXT, path TEXT, cpu REAL, memory REAL, disk "
    "REAL, network REAL, gpu REAL, energy REAL, disk_write REAL);\n"
    "CREATE INDEX IF NOT EXISTS apps_ts ON apps(ts);\n"
    "ALTER TABLE system ADD COLUMN score REAL;";

constexpr const char* retentionScript = "DELETE FROM system WHERE ts < strftime('%s','now') - 2592000;\n"
                                        "DELETE FROM apps WHERE ts < strftime('%s','now') - 2592000;";

constexpr const char* insertSystemSQL =
    "INSERT OR REPLACE INTO system(ts, cpu, memory, disk, network, gpu, energy, disk_write, score) "
    "VALUES(?,?,?,?,?,?,?,?,?)";
constexpr const char* insertAppSQL = "INSERT INTO apps VALUES(?,?,?,?,?,?,?,?,?,?,?)";

constexpr std::string_view columnNames[historyColumnCount] = {"cpu", "memory", "disk",      "network",
                                                              "gpu", "energy", "disk_write"};

/// How long a statement waits for another process's transaction. The loop waits for the history's queue, so
/// this is how late a cycle may come; a minute that can't be stored is tried again with the next one.
constexpr int busyMilliseconds = 200;

void bindValues(Statement& statement, int first, const HistoryValues& values) {
  for (std::size_t i = 0; i < values.size(); ++i) statement.bind(first + int(i), values[i]); // NaN is NULL
}

HistoryValues readValues(const Statement& statement, int first) {
  HistoryValues values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = statement.real(first + int(i));
  return values;
}

std::optional<std::string> textOrNothing(const Statement& statement, int column) {
  auto text = statement.text(column);
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

} // namespace

// Opening

bool HistoryDatabase::ensureOpen(Date now) {
  const bool keeper = access_ == HistoryAccess::keeper;
  if (keeper && hasMoved(db_)) {
    close();
    damaged_ = false; // whoever moved the file has dealt with it
  }
  if (keeper && damaged_) putAside(now);
  if (db_ || open()) return true;
  if (!keeper || !damaged_) return false;
  putAside(now);
  return open();
}

void HistoryDatabase::putAside(Date now) {
  close();
  moveAside(path_, now);
  damaged_ = false;
}

void HistoryDatabase::close() {
  insertSystem_ = {};
  deleteApps_ = {};
  insertApp_ = {};
  db_.close();
}

bool HistoryDatabase::open() {
  const bool keeper = access_ == HistoryAccess::keeper;
  if (keeper) ensurePrivateFolder(std::filesystem::path(path_).parent_path());
  db_ = Database::open(path_, keeper ? Database::Mode::readWriteCreate : Database::Mode::readOnly);
  if (!db_) return false;
  db_.setBusyTimeout(busyMilliseconds);
  const bool usable = registerAppSums(db_) && (!keeper || prepareForWriting());
  if (!usable) close();
  return usable;
}

bool HistoryDatabase::prepareForWriting() {
  if (isForeign()) damaged_ = true;
  if (damaged_) return false;
  // A power cut may cost the last commits, never the file; a sync a minute would keep disks awake.
  db_.exec("PRAGMA synchronous=NORMAL");
  isDamage(db_.exec(schemaScript));
  deleteExpired();
  insertSystem_ = query(insertSystemSQL);
  deleteApps_ = query("DELETE FROM apps WHERE ts = ?");
  insertApp_ = query(insertAppSQL);
  return insertSystem_ && deleteApps_ && insertApp_ && !damaged_;
}

bool HistoryDatabase::isForeign() {
  Statement tables = query("SELECT name FROM sqlite_master WHERE type = 'table'");
  bool any = false, system = false, apps = false;
  while (row(tables)) {
    const auto name = tables.text(0);
    any = true;
    system |= name == "system";
    apps |= name == "apps";
  }
  if (!any) return false;
  // The first table of the schema is there as soon as any is.
  const bool systemFits =
      system && db_.prepare("SELECT ts, cpu, memory, disk, network, gpu, energy, disk_write FROM system");
  return !systemFits || (apps && !db_.prepare(insertAppSQL));
}

bool HistoryDatabase::isReadable() {
  std::error_code error;
  if (!std::filesystem::exists(path_, error) && !error) return true;
  // The first statement is what opens the log: where that fails, no other one reads anything either.
  Statement schema = query("SELECT COUNT(*) FROM sqlite_master");
  return row(schema) && !isForeign() && !damaged_;
}

bool HistoryDatabase::isDamage(int code) {
  const bool damage = meansDamage(code);
  damaged_ |= damage;
  return damage;
}

// Writing

bool HistoryDatabase::write(const HistoryMinute& minute) {
  if (isDamage(db_.exec("BEGIN")) || !db_.inTransaction()) return false;
  if (writeSystemRow(minute)) {
    // A minute may be there already: the keeper was restarted within it, or the clock set back.
    deleteApps_.bind(1, minute.ts);
    run(deleteApps_);
    for (const HistoryApp& app : minute.apps) writeAppRow(minute.ts, app);
    if (!damaged_ && commit()) {
      if (minute.ts % 3600 == 0) deleteExpired();
      return true;
    }
  }
  if (db_.inTransaction()) db_.exec("ROLLBACK");
  return false;
}

bool HistoryDatabase::commit() {
  // A full disk may have ended the transaction at an earlier statement: then there is nothing to commit.
  const int code = db_.inTransaction() ? db_.exec("COMMIT") : SQLITE_FULL;
  isDamage(code);
  return code == SQLITE_OK;
}

bool HistoryDatabase::writeSystemRow(const HistoryMinute& minute) {
  insertSystem_.bind(1, minute.ts);
  bindValues(insertSystem_, 2, minute.system);
  insertSystem_.bind(2 + int(historyColumnCount), minute.score);
  return run(insertSystem_);
}

void HistoryDatabase::writeAppRow(std::int64_t ts, const HistoryApp& app) {
  insertApp_.bind(1, ts);
  insertApp_.bind(2, app.id);
  insertApp_.bind(3, app.name);
  insertApp_.bind(4, app.path);
  bindValues(insertApp_, 5, app.values);
  run(insertApp_);
}

bool HistoryDatabase::run(Statement& statement) {
  const bool done = statement.run();
  if (!done) isDamage(db_.lastErrorCode());
  return done;
}

void HistoryDatabase::deleteExpired() { isDamage(db_.exec(retentionScript)); }

// Queries

Statement HistoryDatabase::query(std::string_view sql) {
  Statement statement = db_.prepare(sql);
  if (!statement) isDamage(db_.lastErrorCode());
  return statement;
}

bool HistoryDatabase::row(Statement& statement) {
  const int code = statement.step();
  if (code == SQLITE_ROW) return true;
  isDamage(code);
  return false;
}

std::optional<std::int64_t> HistoryDatabase::scalar(const std::string& sql) {
  Statement statement = query(sql);
  return row(statement) ? std::optional(statement.integer(0)) : std::nullopt;
}

std::optional<double> HistoryDatabase::scalarDouble(const std::string& sql) {
  Statement statement = query(sql);
  return row(statement) ? std::optional(statement.real(0)) : std::nullopt;
}

std::vector<HistoryPoint> HistoryDatabase::series(Metric metric, std::int64_t since, int bucket) {
  Statement statement =
      query(fmt::format("SELECT ts / {0} * {0}, AVG({1}) FROM system WHERE ts >= {2} GROUP BY 1 ORDER BY 1",
                        bucket, rawValue(metric), since));
  std::vector<HistoryPoint> points;
  while (row(statement)) points.push_back({Date{double(statement.integer(0))}, statement.real(1)});
  return points;
}

std::optional<SeriesSummary> HistoryDatabase::summary(Metric metric, std::int64_t since) {
  Statement statement = query(fmt::format("SELECT MIN({0}), AVG({0}), MAX({0}) FROM system WHERE ts >= {1}",
                                          rawValue(metric), since));
  if (!row(statement) || statement.isNull(1)) return std::nullopt;
  return SeriesSummary{statement.real(0), statement.real(1), statement.real(2)};
}

std::vector<double> HistoryDatabase::recent(Metric metric, std::int64_t since) {
  Statement statement =
      query(fmt::format("SELECT {} FROM system WHERE ts >= {} ORDER BY ts", rawValue(metric), since));
  std::vector<double> values;
  while (row(statement)) values.push_back(statement.real(0));
  return values;
}

std::vector<AppTotal> HistoryDatabase::topApps(Metric metric, std::int64_t since, std::size_t limit,
                                               bool wholeHistory) {
  db_.exec("BEGIN"); // one state of the file for all three statements
  const auto minutes = scalar(fmt::format("SELECT COUNT(*) FROM system WHERE ts >= {}", since)).value_or(1);
  const auto answer = sumByApp(db_, rawValue(metric), since, limit, wholeHistory);
  isDamage(answer.code);
  Statement names = query("SELECT name, path FROM apps WHERE rowid = ?");
  std::vector<AppTotal> totals;
  for (const AppSum& app : answer.sums) {
    names.bind(1, app.firstRow);
    if (row(names))
      totals.push_back({.name = names.text(0),
                        .bundlePath = textOrNothing(names, 1),
                        .value = app.sum / double(std::max<std::int64_t>(minutes, 1))});
    names.reset();
  }
  db_.exec("COMMIT");
  return totals;
}

double HistoryDatabase::average(Metric metric, std::int64_t since, int minimumMinutes) {
  if (minimumMinutes >= 1 &&
      scalar(fmt::format("SELECT COUNT(*) FROM system WHERE ts >= {}", since)).value_or(0) < minimumMinutes)
    return 0;
  return scalarDouble(fmt::format("SELECT AVG({}) FROM system WHERE ts >= {}", rawValue(metric), since))
      .value_or(0);
}

std::optional<double> HistoryDatabase::averageScore(std::int64_t since) {
  Statement statement = query(
      fmt::format("SELECT AVG(score), COUNT(score) FROM system WHERE score IS NOT NULL AND ts >= {}", since));
  if (!row(statement) || statement.integer(1) <= 0) return std::nullopt;
  return statement.real(0);
}

double HistoryDatabase::totalBytes(std::string_view column, std::int64_t since) {
  if (std::find(std::begin(columnNames), std::end(columnNames), column) == std::end(columnNames)) return 0;
  return scalarDouble(fmt::format("SELECT SUM({}) * 60 FROM system WHERE ts >= {}", column, since))
      .value_or(0);
}

std::optional<HistoryMinute> HistoryDatabase::minute(std::int64_t ts) {
  Statement system = query(fmt::format(
      "SELECT cpu, memory, disk, network, gpu, energy, disk_write, score FROM system WHERE ts = {}", ts));
  if (!row(system)) return std::nullopt;
  HistoryMinute minute{.ts = ts, .system = readValues(system, 0), .score = {}, .apps = {}};
  if (!system.isNull(int(historyColumnCount))) minute.score = system.real(int(historyColumnCount));
  Statement apps = query(fmt::format("SELECT app, name, path, cpu, memory, disk, network, gpu, energy, "
                                     "disk_write FROM apps WHERE ts = {} ORDER BY rowid",
                                     ts));
  while (row(apps))
    minute.apps.push_back({.id = apps.text(0),
                           .name = apps.text(1),
                           .path = textOrNothing(apps, 2),
                           .values = readValues(apps, 3)});
  return minute;
}

} // namespace korvell
