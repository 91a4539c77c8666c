#include "Core/AIUsage/UsageDatabase.h"

#include "Base/DatabaseFile.h"

#include <algorithm>
#include <cmath>
#include <sqlite3.h>

namespace korvell {

namespace {

constexpr const char* schemaScript =
    "CREATE TABLE IF NOT EXISTS files(path TEXT PRIMARY KEY, offset INTEGER, last_total INTEGER, model TEXT, "
    "project TEXT);\n"
    "CREATE TABLE IF NOT EXISTS usage(day TEXT, tool TEXT, model TEXT, project TEXT, input INTEGER, output "
    "INTEGER,\n    cache_write INTEGER, cache_write_1h INTEGER, cache_read INTEGER, PRIMARY KEY(day, tool, "
    "model, project)) WITHOUT ROWID;\n"
    "CREATE TABLE IF NOT EXISTS seen(hash INTEGER PRIMARY KEY, day TEXT);\n"
    "CREATE TABLE IF NOT EXISTS kv(key TEXT PRIMARY KEY, value BLOB);";

constexpr std::string_view loadFilesSQL = "SELECT path, offset, last_total, model, project FROM files";
constexpr std::string_view loadValueSQL = "SELECT value FROM kv WHERE key = ?";
constexpr std::string_view addSeenSQL = "INSERT OR IGNORE INTO seen(hash, day) VALUES(?, ?)";
constexpr std::string_view hasSeenSQL = "SELECT 1 FROM seen WHERE hash = ?";
constexpr std::string_view saveFileSQL = "INSERT OR REPLACE INTO files VALUES(?, ?, ?, ?, ?)";
constexpr std::string_view addUsageSQL =
    "INSERT INTO usage VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?) ON CONFLICT(day, tool, model, project) DO UPDATE "
    "SET\ninput = input + excluded.input, output = output + excluded.output, cache_write = cache_write + "
    "excluded.cache_write,\ncache_write_1h = cache_write_1h + excluded.cache_write_1h, cache_read = "
    "cache_read + excluded.cache_read";
constexpr std::string_view oneRowSQL =
    "SELECT input, output, cache_write, cache_write_1h, cache_read FROM usage WHERE day = ? AND tool = ? AND "
    "model = ? AND project = ?";
constexpr std::string_view saveValueSQL = "INSERT OR REPLACE INTO kv VALUES(?, ?)";
constexpr std::string_view removeValueSQL = "DELETE FROM kv WHERE key = ?";
constexpr std::string_view limitsKey = "codex_limits", limitsAheadKey = "codex_limits_ahead";
constexpr std::string_view readRowsSQL =
    "SELECT day, tool, model, project, input, output, cache_write, cache_write_1h, cache_read FROM usage "
    "WHERE day >= ?";
constexpr std::string_view dayBeforeSQL = "SELECT max(day) FROM usage WHERE day < ?";
constexpr std::string_view pruneSQL[] = {"DELETE FROM usage WHERE day < ?", "DELETE FROM seen WHERE day < ?"};
constexpr int daysKept = 40;
/// Well below what is kept beyond the longest period shown.
constexpr int longestGap = 7; ///< days
constexpr int provingDays = 7;

// The columns of two tables, in the order in which every statement names them.
enum class FileColumn { path, offset, lastTotal, model, project };
enum class UsageColumn { day, tool, model, project, input, output, cacheWrite, cacheWrite1h, cacheRead };

constexpr std::pair<UsageColumn, std::int64_t Counts::*> countColumns[] = {
    {UsageColumn::input, &Counts::input},
    {UsageColumn::output, &Counts::output},
    {UsageColumn::cacheWrite, &Counts::cacheWrite},
    {UsageColumn::cacheWrite1h, &Counts::cacheWrite1h},
    {UsageColumn::cacheRead, &Counts::cacheRead}};

/// Its place among the results of a statement that begins with `first`.
template <class Column>
constexpr int column(Column column, Column first = Column{}) {
  return int(column) - int(first);
}
template <class Column>
constexpr int parameter(Column column) {
  return int(column) + 1;
}

/// One attempt to get the lock, after which a cancellation is noticed; and how many a scan makes, because a
/// first scan of many gigabytes holds it for some seconds.
constexpr int busyMilliseconds = 250;
constexpr int attempts = 40;

Counts countsFrom(const Statement& row, UsageColumn first) {
  Counts counts;
  for (const auto& [place, count] : countColumns) counts.*count = row.integer(column(place, first));
  return counts;
}

void bindKey(Statement& statement, const std::string& day, const Bucket& bucket) {
  statement.bind(parameter(UsageColumn::day), day);
  statement.bind(parameter(UsageColumn::tool), rawValue(bucket.tool));
  statement.bind(parameter(UsageColumn::model), *bucket.model);
  statement.bind(parameter(UsageColumn::project), *bucket.project);
}

} // namespace

UsageDatabase::UsageDatabase(std::string path, Date now) : path_(std::move(path)) {
  open();
  if (ensureTables()) prune(now);
}

// Opening

void UsageDatabase::open() {
  int code = 0;
  db_ = openPrivateDatabase(path_, &code);
  note(code);
  db_.setBusyTimeout(busyMilliseconds);
  version_ = number("PRAGMA data_version");
}

void UsageDatabase::close() {
  for (auto* statement : {&saveFile_, &addUsage_, &oneRow_, &saveValue_, &addSeen_, &hasSeen_})
    *statement = {};
  db_.close();
  ready_ = false;
}

/// Opens the file again where that is called for; false when a damaged one is in the way.
bool UsageDatabase::renew(Date now) {
  const bool moved = hasMoved(db_); // by a process that found it damaged, or by the user
  const bool damaged = std::exchange(problem_, Problem::none) == Problem::damaged && !moved;
  if (db_ && !moved && !damaged) return true;
  close();
  if (damaged) {
    auto target = moveAside(path_, now);
    if (!target) {
      problem_ = Problem::unusable;
      return false;
    }
    putAside_ = std::move(target);
  }
  open();
  if (db_) version_ = -1; // what is in memory belongs to another file
  return true;
}

bool UsageDatabase::ensureTables() {
  if (ready_ || !db_) return ready_;
  // This version's files carry no version number; a later one that changes the tables sets one.
  const bool isNewer = number("PRAGMA user_version") > 0;
  if (problem_ == Problem::none && isNewer) problem_ = Problem::foreign;
  if (problem_ != Problem::none) return false;
  // Write-ahead logging lets summaries read during a scan. A power cut may take the last scan, with its
  // offsets, and the next one repeats it from the logs: no need to wait for the disk.
  db_.exec("PRAGMA synchronous=NORMAL; PRAGMA journal_mode=WAL");
  ready_ = execute(schemaScript) && prepareAll();
  return ready_;
}

bool UsageDatabase::prepareAll() {
  const std::pair<Statement&, std::string_view> statements[] = {
      {saveFile_, saveFileSQL},   {addUsage_, addUsageSQL}, {oneRow_, oneRowSQL},
      {saveValue_, saveValueSQL}, {addSeen_, addSeenSQL},   {hasSeen_, hasSeenSQL}};
  for (const auto& [statement, sql] : statements) {
    statement = db_.prepare(sql);
    if (statement) continue;
    if (db_.lastErrorCode() == SQLITE_ERROR)
      problem_ = Problem::foreign; // the tables have other columns
    else
      note(db_.lastErrorCode());
    return false;
  }
  return true;
}

/// As well as it goes: rows that stay are not shown.
void UsageDatabase::prune(Date now) {
  const CalendarDay today{std::int64_t(std::floor(now.sinceEpoch / 86'400))};
  const auto newest = newestTrusted(dayText(today + 2)); // tomorrow has begun where clocks are ahead of UTC
  if (!newest) return;
  for (const auto sql : pruneSQL) {
    auto statement = db_.prepare(sql);
    statement.bind(1, dayText(std::min(today, *newest) + -daysKept));
    statement.run();
  }
}

/// One look into the index for each day, of which there are seven at most.
std::optional<CalendarDay> UsageDatabase::newestTrusted(std::string end) {
  auto dayBefore = db_.prepare(dayBeforeSQL);
  std::optional<CalendarDay> trusted, later;
  for (int days = 0; days < provingDays;) {
    dayBefore.bind(1, end);
    if (!row(dayBefore) || dayBefore.isNull(0)) break;
    end = dayBefore.text(0);
    dayBefore.reset();
    const auto day = parseDay(end);
    if (!day) continue; // no day at all
    if (!later || *day + longestGap < *later) trusted = day;
    later = day;
    ++days;
  }
  return trusted;
}

// Failures

void UsageDatabase::note(int code) {
  const int primary = code & 0xff;
  if (problem_ != Problem::none || primary == SQLITE_OK || primary == SQLITE_ROW || primary == SQLITE_DONE)
    return;
  problem_ = meansDamage(code)                                    ? Problem::damaged
             : primary == SQLITE_BUSY || primary == SQLITE_LOCKED ? Problem::locked
             : primary == SQLITE_FULL                             ? Problem::full
                                                                  : Problem::unusable;
}

bool UsageDatabase::execute(const char* sql) {
  const int code = db_.exec(sql);
  note(code);
  return code == SQLITE_OK;
}

bool UsageDatabase::row(Statement& statement) {
  const int code = statement ? statement.step() : db_.lastErrorCode();
  note(code);
  return code == SQLITE_ROW;
}

// Some errors, a full disk among them, end the transaction by themselves; what is written after that would
// be kept without the rest.
void UsageDatabase::write(Statement& statement) {
  if (problem_ != Problem::none) return;
  if (!db_.inTransaction())
    problem_ = Problem::unusable;
  else if (!statement.runKeepingBindings())
    note(db_.lastErrorCode());
}

// Reading

std::int64_t UsageDatabase::number(const char* sql) {
  if (!db_) return 0;
  auto statement = db_.prepare(sql);
  return row(statement) ? statement.integer(0) : 0;
}

std::optional<std::unordered_map<std::string, FileState>> UsageDatabase::fileStates() {
  std::unordered_map<std::string, FileState> states;
  if (!db_) return states;
  auto statement = db_.prepare(loadFilesSQL);
  int code = statement.step();
  for (; code == SQLITE_ROW; code = statement.step())
    if (!statement.isNull(column(FileColumn::path)))
      states[statement.text(column(FileColumn::path))] = {
          .offset = statement.integer(column(FileColumn::offset)),
          .lastTotal = statement.integer(column(FileColumn::lastTotal)),
          .model = statement.text(column(FileColumn::model)),
          .project = statement.text(column(FileColumn::project))};
  if (code == SQLITE_DONE) return states;
  note(statement ? code : db_.lastErrorCode());
  return std::nullopt;
}

std::optional<AICodexLimits> UsageDatabase::reading(std::string_view key) {
  if (!db_) return std::nullopt;
  auto statement = db_.prepare(loadValueSQL);
  statement.bind(1, key);
  return row(statement) ? decodeLimits(statement.text(0)) : std::nullopt;
}

PlanReadings UsageDatabase::limits() { return {reading(limitsKey), reading(limitsAheadKey)}; }

std::vector<UsageRow> UsageDatabase::rows(const std::string& day) {
  std::vector<UsageRow> rows;
  auto statement = db_.prepare(readRowsSQL);
  if (!statement) {
    if (db_) note(db_.lastErrorCode());
    return rows;
  }
  statement.bind(1, day);
  while (row(statement))
    rows.push_back({.day = statement.text(column(UsageColumn::day)),
                    .tool = statement.text(column(UsageColumn::tool)),
                    .model = statement.text(column(UsageColumn::model)),
                    .project = statement.text(column(UsageColumn::project)),
                    .counts = countsFrom(statement, UsageColumn::day)});
  return rows;
}

bool UsageDatabase::hasSeen(std::uint64_t hash) {
  if (!db_) return false;
  hasSeen_.bind(1, std::int64_t(hash));
  const bool found = row(hasSeen_);
  hasSeen_.reset();
  return found;
}

CalendarDay UsageDatabase::seenDay(CalendarDay today) {
  const auto newest = db_ ? newestTrusted("9999-12-32") : std::nullopt;
  return newest && today + longestGap < *newest ? *newest : today;
}

bool UsageDatabase::hasSeenAny() { return number("SELECT 1 FROM seen LIMIT 1") == 1; }

// Transactions

bool UsageDatabase::begin(Date now, const Cancellation& cancellation) {
  if (!renew(now)) return false;
  for (int attempt = 0; db_ && attempt < attempts && !cancellation.isCancelled(); ++attempt) {
    problem_ = Problem::none;
    if (ensureTables() && execute("BEGIN IMMEDIATE")) return true;
    if (problem_ != Problem::locked) return false;
  }
  return !db_;
}

bool UsageDatabase::commit() {
  if (!db_) return true;
  if (problem_ == Problem::none && !db_.inTransaction()) problem_ = Problem::unusable;
  return problem_ == Problem::none && execute("COMMIT");
}

void UsageDatabase::rollback() {
  if (db_.inTransaction()) db_.exec("ROLLBACK");
}

bool UsageDatabase::changedElsewhere() {
  const auto version = number("PRAGMA data_version");
  return version != std::exchange(version_, version);
}

void UsageDatabase::saveFile(const std::string& path, const FileState& state) {
  if (!db_) return;
  saveFile_.bind(parameter(FileColumn::path), path);
  saveFile_.bind(parameter(FileColumn::offset), state.offset);
  saveFile_.bind(parameter(FileColumn::lastTotal), state.lastTotal);
  saveFile_.bind(parameter(FileColumn::model), state.model);
  saveFile_.bind(parameter(FileColumn::project), state.project);
  write(saveFile_);
}

Counts UsageDatabase::stored(const Bucket& bucket) {
  bindKey(oneRow_, dayText(bucket.day), bucket);
  const Counts counts = row(oneRow_) ? countsFrom(oneRow_, UsageColumn::input) : Counts{};
  oneRow_.reset();
  return counts;
}

void UsageDatabase::addUsage(const Bucket& bucket, const Counts& counts) {
  if (!db_) return;
  // SQLite would turn a sum beyond 64 bits into a rounded real number: what is added ends where they end.
  const Counts before = stored(bucket);
  Counts sum = before;
  sum += counts;
  bindKey(addUsage_, dayText(bucket.day), bucket);
  for (const auto& [place, count] : countColumns)
    addUsage_.bind(parameter(place), subtractTokens(sum.*count, before.*count));
  write(addUsage_);
}

void UsageDatabase::saveLimits(const PlanReadings& limits) {
  if (!db_) return;
  for (const auto& [key, reading] :
       {std::pair(limitsKey, &limits.latest), std::pair(limitsAheadKey, &limits.ahead)}) {
    auto remove = *reading ? Statement() : db_.prepare(removeValueSQL);
    auto& statement = *reading ? saveValue_ : remove;
    statement.bind(1, key);
    if (*reading) statement.bindBlob(2, encodeLimits(**reading));
    write(statement);
  }
}

void UsageDatabase::addSeen(std::span<const std::int64_t> hashes, const std::string& day) {
  if (!db_) return;
  addSeen_.bind(2, day);
  for (const auto hash : hashes) {
    addSeen_.bind(1, hash);
    write(addSeen_);
  }
}

} // namespace korvell
