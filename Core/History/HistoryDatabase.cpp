#include "Core/History/HistoryDatabase.h"

#include "Core/History/AppSums.h"
#include "Core/History/HistorySchema.h"

#include <algorithm>
#include <filesystem>
#include <fmt/format.h>
#include <sqlite3.h>

namespace korvell {

namespace {

constexpr const char* insertSystemSQL =
    "INSERT OR REPLACE INTO system(ts, cpu, memory, disk, network, gpu, energy, disk_write, score) "
    "VALUES(?,?,?,?,?,?,?,?,?)";

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

std::string within(HistoryPeriod period) {
  return fmt::format("ts >= {} AND ts <= {}", period.since, period.until);
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
  failure_ = SQLITE_OK;
  fault_.reset();
  bool usable =
      keeper ? openWith(openPrivateDatabase(path_, &failure_)) && prepareForWriting() : openToRead();
  // In a newer version's file not even the journal's mode is set.
  if (fault_ == DatabaseFault::newer) usable = openToRead();
  if (usable) return true;
  close();
  if (keeper) fault_ = faultOf(path_, damaged_ ? SQLITE_CORRUPT : failure_);
  return false;
}

bool HistoryDatabase::openWith(Database database) {
  db_ = std::move(database);
  if (!db_) return false;
  db_.setBusyTimeout(busyMilliseconds);
  return registerAppSums(db_);
}

bool HistoryDatabase::openToRead() {
  close();
  return openWith(Database::open(path_, Database::Mode::readOnly, &failure_));
}

bool HistoryDatabase::prepareForWriting() {
  int code = SQLITE_OK;
  const auto schema = historySchema(db_, code);
  if (isDamage(code) || code != SQLITE_OK) return false;
  damaged_ = schema == HistorySchema::foreign;
  if (schema == HistorySchema::newer) fault_ = DatabaseFault::newer;
  if (schema != HistorySchema::ours) return false;
  // A power cut may cost the last commits, never the file; a sync a minute would keep disks awake.
  db_.exec("PRAGMA synchronous=NORMAL");
  code = db_.exec(historySchemaScript);
  if ((code & 0xff) != SQLITE_ERROR && code != SQLITE_OK) return isDamage(code), false;
  if (isDamage(makeHourSums(db_))) return false;
  hoursAreMissing_ = true;
  deleteExpired();
  insertSystem_ = query(insertSystemSQL);
  deleteApps_ = query("DELETE FROM apps WHERE ts = ?");
  insertApp_ = query(insertAppSQL);
  return insertSystem_ && deleteApps_ && insertApp_ && !damaged_;
}

std::optional<DatabaseFault> HistoryDatabase::fault() {
  if (access_ == HistoryAccess::keeper) return fault_;
  std::error_code error;
  if (std::filesystem::symlink_status(path_, error).type() == std::filesystem::file_type::not_found)
    return std::nullopt;
  if (!db_) return faultOf(path_, failure_);
  // The first statement is what opens the log: where that fails, no other one reads anything either.
  int code = SQLITE_OK;
  const auto schema = historySchema(db_, code);
  if (isDamage(code) || code != SQLITE_OK) return faultOf(path_, code);
  if (schema == HistorySchema::foreign || damaged_) return DatabaseFault::damaged;
  return schema == HistorySchema::newer ? std::optional(DatabaseFault::newer) : std::nullopt;
}

bool HistoryDatabase::isReadable() {
  const auto found = fault();
  if (found != DatabaseFault::newer) return !found;
  return historyHasOurColumns(db_);
}

bool HistoryDatabase::isDamage(int code) {
  if (failure_ == SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) failure_ = code;
  const bool damage = meansDamage(code);
  damaged_ |= damage;
  return damage;
}

// Writing

bool HistoryDatabase::write(const HistoryMinute& minute) {
  if (!insertSystem_) return false; // open to be read only
  failure_ = SQLITE_OK;
  fault_.reset();
  if (begin() && writeRows(minute) && commit()) {
    if (minute.ts % 3600 == 0) deleteExpired();
    deriveHourSums(minute.ts);
    return true;
  }
  if (db_.inTransaction()) db_.exec("ROLLBACK");
  fault_ = faultOf(path_, damaged_ ? SQLITE_CORRUPT : failure_);
  return false;
}

bool HistoryDatabase::begin() { return !isDamage(db_.exec("BEGIN")) && db_.inTransaction(); }

bool HistoryDatabase::writeRows(const HistoryMinute& minute) {
  if (!writeSystemRow(minute)) return false;
  // A minute may be there already: the keeper was restarted within it, or the clock set back.
  deleteApps_.bind(1, minute.ts);
  run(deleteApps_);
  for (const HistoryApp& app : minute.apps) writeAppRow(minute.ts, app);
  return !damaged_;
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

void HistoryDatabase::deleteExpired() {
  isDamage(deleteExpiredHistory(db_));
  isDamage(expireHourSums(db_));
}

// Apart from the minute: without the sums everything is answered all the same, only later.
void HistoryDatabase::deriveHourSums(std::int64_t ts) {
  if (!hoursAreMissing_ && ts / 3600 == summedBefore_) return;
  const auto added = begin() ? addHourSums(db_, ts) : std::nullopt;
  if (added && commit()) {
    summedBefore_ = ts / 3600;
    hoursAreMissing_ = *added;
  } else if (db_.inTransaction()) {
    db_.exec("ROLLBACK");
  }
}

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

std::vector<HistoryPoint> HistoryDatabase::series(Metric metric, HistoryPeriod period, int bucket) {
  Statement statement =
      query(fmt::format("SELECT ts / {0} * {0}, AVG({1}) FROM system WHERE {2} GROUP BY 1 ORDER BY 1", bucket,
                        rawValue(metric), within(period)));
  std::vector<HistoryPoint> points;
  while (row(statement)) points.push_back({Date{double(statement.integer(0))}, statement.real(1)});
  return points;
}

std::vector<ChartPoint> HistoryDatabase::chart(Metric metric, HistoryPeriod period, int stretch) {
  return chart(rawValue(metric), period, stretch);
}

std::vector<ChartPoint> HistoryDatabase::readChart(HistoryPeriod period, int stretch) {
  return chart("MAX(disk - disk_write, 0)", period, stretch);
}

std::vector<ChartPoint> HistoryDatabase::writtenChart(HistoryPeriod period, int stretch) {
  return chart("disk_write", period, stretch);
}

std::vector<ChartPoint> HistoryDatabase::chart(std::string_view value, HistoryPeriod period, int stretch) {
  Statement statement = query(
      fmt::format("SELECT ts / {0} * {0}, MIN({1}), AVG({1}), MAX({1}) FROM system WHERE {2} AND {1} IS "
                  "NOT NULL GROUP BY 1 ORDER BY 1",
                  stretch, value, within(period)));
  std::vector<ChartPoint> points;
  while (row(statement))
    points.push_back(
        {Date{double(statement.integer(0))}, statement.real(1), statement.real(2), statement.real(3)});
  return points;
}

std::optional<SeriesSummary> HistoryDatabase::summary(Metric metric, HistoryPeriod period) {
  Statement statement = query(fmt::format("SELECT MIN({0}), AVG({0}), MAX({0}) FROM system WHERE {1}",
                                          rawValue(metric), within(period)));
  if (!row(statement) || statement.isNull(1)) return std::nullopt;
  return SeriesSummary{statement.real(0), statement.real(1), statement.real(2)};
}

std::vector<double> HistoryDatabase::recent(Metric metric, HistoryPeriod period) {
  Statement statement =
      query(fmt::format("SELECT {} FROM system WHERE {} ORDER BY ts", rawValue(metric), within(period)));
  std::vector<double> values;
  while (row(statement)) values.push_back(statement.real(0));
  return values;
}

std::vector<AppTotal> HistoryDatabase::topApps(Metric metric, HistoryPeriod period, std::size_t limit) {
  db_.exec("BEGIN"); // one state of the file for all statements
  const auto minutes = std::max<std::int64_t>(minuteCount(period).value_or(1), 1);
  auto answer = sumByApp(db_, rawValue(metric), period, limit);
  isDamage(answer.code);
  for (auto& total : answer.sums) total.value /= double(minutes);
  db_.exec("COMMIT");
  return std::move(answer.sums);
}

std::optional<std::int64_t> HistoryDatabase::minuteCount(HistoryPeriod period) {
  return scalar(fmt::format("SELECT COUNT(*) FROM system WHERE {}", within(period)));
}

std::optional<double> HistoryDatabase::average(Metric metric, HistoryPeriod period, int minimumMinutes) {
  if (minimumMinutes >= 1 && minuteCount(period).value_or(0) < minimumMinutes) return std::nullopt;
  return scalarDouble(fmt::format("SELECT AVG({}) FROM system WHERE {}", rawValue(metric), within(period)));
}

std::optional<double> HistoryDatabase::averageScore(HistoryPeriod period) {
  Statement statement = query(fmt::format(
      "SELECT AVG(score), COUNT(score) FROM system WHERE score IS NOT NULL AND {}", within(period)));
  if (!row(statement) || statement.integer(1) <= 0) return std::nullopt;
  return statement.real(0);
}

double HistoryDatabase::totalBytes(std::string_view column, HistoryPeriod period) {
  if (std::find(std::begin(columnNames), std::end(columnNames), column) == std::end(columnNames)) return 0;
  return scalarDouble(fmt::format("SELECT SUM({}) * 60 FROM system WHERE {}", column, within(period)))
      .value_or(0);
}

std::optional<Date> HistoryDatabase::oldest() {
  Statement statement = query("SELECT MIN(ts) FROM system");
  if (!row(statement) || statement.isNull(0)) return std::nullopt;
  return Date{double(statement.integer(0))};
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
