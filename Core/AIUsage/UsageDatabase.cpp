#include "Core/AIUsage/UsageDatabase.h"

#include "Base/DatabaseFile.h"
#include "Base/UserFolders.h"

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
constexpr std::string_view loadLimitsSQL = "SELECT value FROM kv WHERE key = 'codex_limits'";
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
constexpr std::string_view saveLimitsSQL = "INSERT OR REPLACE INTO kv VALUES('codex_limits', ?)";
constexpr std::string_view readRowsSQL =
    "SELECT day, tool, model, project, input, output, cache_write, cache_write_1h, cache_read FROM usage "
    "WHERE day >= ?";
constexpr std::string_view pruneSQL[] = {"DELETE FROM usage WHERE day < date(?, 'unixepoch', '-40 days')",
                                         "DELETE FROM seen WHERE day < date(?, 'unixepoch', '-40 days')"};

/// One attempt to get the lock, after which a cancellation is noticed; and how many a scan makes, because a
/// first scan of many gigabytes holds it for some seconds.
constexpr int busyMilliseconds = 250;
constexpr int attempts = 40;

Counts countsFrom(const Statement& row, int column) {
  return {row.integer(column), row.integer(column + 1), row.integer(column + 2), row.integer(column + 3),
          row.integer(column + 4)};
}

void bindKey(Statement& statement, const std::string& day, const Bucket& bucket) {
  statement.bind(1, day);
  statement.bind(2, rawValue(bucket.tool));
  statement.bind(3, *bucket.model);
  statement.bind(4, *bucket.project);
}

} // namespace

UsageDatabase::UsageDatabase(std::string path, Date now) : path_(std::move(path)) {
  open();
  if (ensureTables()) prune(now);
}

// Opening

void UsageDatabase::open() {
  ensurePrivateFolder(path_.substr(0, path_.rfind('/')));
  int code = 0;
  db_ = Database::open(path_, Database::Mode::readWriteCreate, &code);
  note(code);
  db_.setBusyTimeout(busyMilliseconds);
  version_ = number("PRAGMA data_version");
}

void UsageDatabase::close() {
  for (auto* statement : {&saveFile_, &addUsage_, &oneRow_, &saveLimits_, &addSeen_, &hasSeen_})
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
      {saveFile_, saveFileSQL},     {addUsage_, addUsageSQL}, {oneRow_, oneRowSQL},
      {saveLimits_, saveLimitsSQL}, {addSeen_, addSeenSQL},   {hasSeen_, hasSeenSQL}};
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
  for (const auto sql : pruneSQL) {
    auto statement = db_.prepare(sql);
    statement.bind(1, std::int64_t(now.sinceEpoch));
    statement.run();
  }
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
    if (!statement.isNull(0))
      states[statement.text(0)] = {statement.integer(1), statement.integer(2), statement.text(3),
                                   statement.text(4)};
  if (code == SQLITE_DONE) return states;
  note(statement ? code : db_.lastErrorCode());
  return std::nullopt;
}

std::optional<AICodexLimits> UsageDatabase::limits() {
  auto statement = db_.prepare(loadLimitsSQL);
  return db_ && row(statement) ? decodeLimits(statement.text(0)) : std::nullopt;
}

std::vector<UsageRow> UsageDatabase::rows(const std::string& day) {
  std::vector<UsageRow> rows;
  auto statement = db_.prepare(readRowsSQL);
  if (!statement) {
    if (db_) note(db_.lastErrorCode());
    return rows;
  }
  statement.bind(1, day);
  while (row(statement))
    rows.push_back({statement.text(0), statement.text(1), statement.text(2), statement.text(3),
                    countsFrom(statement, 4)});
  return rows;
}

bool UsageDatabase::hasSeen(std::uint64_t hash) {
  if (!db_) return false;
  hasSeen_.bind(1, std::int64_t(hash));
  const bool found = row(hasSeen_);
  hasSeen_.reset();
  return found;
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
  saveFile_.bind(1, path);
  saveFile_.bind(2, state.offset);
  saveFile_.bind(3, state.lastTotal);
  saveFile_.bind(4, state.model);
  saveFile_.bind(5, state.project);
  write(saveFile_);
}

Counts UsageDatabase::stored(const Bucket& bucket) {
  bindKey(oneRow_, dayText(bucket.day), bucket);
  const Counts counts = row(oneRow_) ? countsFrom(oneRow_, 0) : Counts{};
  oneRow_.reset();
  return counts;
}

void UsageDatabase::addUsage(const Bucket& bucket, const Counts& counts) {
  if (!db_) return;
  // SQLite would turn a sum beyond 64 bits into a rounded real number.
  Counts sum = stored(bucket);
  sum += counts;
  bindKey(addUsage_, dayText(bucket.day), bucket);
  addUsage_.bind(5, counts.input);
  addUsage_.bind(6, counts.output);
  addUsage_.bind(7, counts.cacheWrite);
  addUsage_.bind(8, counts.cacheWrite1h);
  addUsage_.bind(9, counts.cacheRead);
  write(addUsage_);
}

void UsageDatabase::saveLimits(const AICodexLimits& limits) {
  if (!db_) return;
  saveLimits_.bindBlob(1, encodeLimits(limits));
  write(saveLimits_);
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
