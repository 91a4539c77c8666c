#include "Core/AIUsage/UsageDatabase.h"

#include "Base/UserFolders.h"

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

/// A first scan of many gigabytes holds the lock for some seconds.
constexpr int busyMilliseconds = 10'000;

Counts countsFrom(const Statement& row, int column) {
  return {row.integer(column), row.integer(column + 1), row.integer(column + 2), row.integer(column + 3),
          row.integer(column + 4)};
}

void bindKey(Statement& statement, const std::string& day, const Bucket& bucket) {
  statement.bind(1, day);
  statement.bind(2, rawValue(bucket.tool));
  statement.bind(3, bucket.model);
  statement.bind(4, bucket.project);
}

} // namespace

UsageDatabase::UsageDatabase(const std::string& path, Date now) {
  ensurePrivateFolder(path.substr(0, path.rfind('/')));
  db_ = Database::open(path, Database::Mode::readWriteCreate);
  db_.setBusyTimeout(busyMilliseconds);
  if (ensureTables()) prune(now);
  version_ = number("PRAGMA data_version");
}

bool UsageDatabase::ensureTables() {
  if (ready_ || !db_) return ready_;
  // This version's files carry no version number; a later one that changes the tables sets one.
  foreign_ = number("PRAGMA user_version") > 0;
  if (foreign_) return false;
  // Write-ahead logging lets summaries read during a scan. A power cut may take the last scan, with its
  // offsets, and the next one repeats it from the logs: no need to wait for the disk.
  db_.exec("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL");
  if (const int code = db_.exec(schemaScript); code != 0) return false;
  ready_ = prepareAll();
  foreign_ = !ready_;
  return ready_;
}

bool UsageDatabase::prepareAll() {
  saveFile_ = db_.prepare(saveFileSQL);
  addUsage_ = db_.prepare(addUsageSQL);
  oneRow_ = db_.prepare(oneRowSQL);
  saveLimits_ = db_.prepare(saveLimitsSQL);
  addSeen_ = db_.prepare(addSeenSQL);
  hasSeen_ = db_.prepare(hasSeenSQL);
  return saveFile_ && addUsage_ && oneRow_ && saveLimits_ && addSeen_ && hasSeen_;
}

void UsageDatabase::prune(Date now) {
  for (const auto sql : pruneSQL) {
    auto statement = db_.prepare(sql);
    statement.bind(1, std::int64_t(now.sinceEpoch));
    statement.run();
  }
}

std::int64_t UsageDatabase::number(const char* sql) {
  auto statement = db_.prepare(sql);
  return statement.stepRow() ? statement.integer(0) : 0;
}

std::unordered_map<std::string, FileState> UsageDatabase::fileStates() {
  std::unordered_map<std::string, FileState> states;
  auto statement = db_.prepare(loadFilesSQL);
  while (statement.stepRow())
    if (!statement.isNull(0))
      states[statement.text(0)] = {statement.integer(1), statement.integer(2), statement.text(3),
                                   statement.text(4)};
  return states;
}

std::optional<AICodexLimits> UsageDatabase::limits() {
  auto statement = db_.prepare(loadLimitsSQL);
  return statement.stepRow() ? decodeLimits(statement.text(0)) : std::nullopt;
}

std::vector<UsageRow> UsageDatabase::rows(const std::string& day) {
  std::vector<UsageRow> rows;
  auto statement = db_.prepare(readRowsSQL);
  if (statement) statement.bind(1, day);
  while (statement.stepRow())
    rows.push_back({statement.text(0), statement.text(1), statement.text(2), statement.text(3),
                    countsFrom(statement, 4)});
  return rows;
}

bool UsageDatabase::begin() {
  if (!db_) return true;
  return ensureTables() && db_.exec("BEGIN IMMEDIATE") == 0;
}

bool UsageDatabase::commit() { return !db_ || db_.exec("COMMIT") == 0; }

void UsageDatabase::rollback() {
  if (db_.inTransaction()) db_.exec("ROLLBACK");
}

bool UsageDatabase::changedElsewhere() {
  const auto version = number("PRAGMA data_version");
  return version != std::exchange(version_, version);
}

// Some errors, a full disk among them, end the transaction by themselves; what is written after that would
// be kept without the rest.
bool UsageDatabase::saveFile(const std::string& path, const FileState& state) {
  if (!db_) return true;
  saveFile_.bind(1, path);
  saveFile_.bind(2, state.offset);
  saveFile_.bind(3, state.lastTotal);
  saveFile_.bind(4, state.model);
  saveFile_.bind(5, state.project);
  return db_.inTransaction() && saveFile_.run();
}

/// SQLite would turn a sum beyond 64 bits into a rounded real number.
void UsageDatabase::checkSum(const Bucket& bucket, const Counts& counts) {
  bindKey(oneRow_, dayText(bucket.day), bucket);
  if (oneRow_.stepRow()) {
    Counts sum = countsFrom(oneRow_, 0);
    sum += counts;
  }
  oneRow_.reset();
}

bool UsageDatabase::addUsage(const Bucket& bucket, const Counts& counts) {
  if (!db_) return true;
  checkSum(bucket, counts);
  bindKey(addUsage_, dayText(bucket.day), bucket);
  addUsage_.bind(5, counts.input);
  addUsage_.bind(6, counts.output);
  addUsage_.bind(7, counts.cacheWrite);
  addUsage_.bind(8, counts.cacheWrite1h);
  addUsage_.bind(9, counts.cacheRead);
  return db_.inTransaction() && addUsage_.run();
}

bool UsageDatabase::saveLimits(const AICodexLimits& limits) {
  if (!db_) return true;
  saveLimits_.bindBlob(1, encodeLimits(limits));
  return db_.inTransaction() && saveLimits_.run();
}

bool UsageDatabase::addSeen(std::uint64_t hash, const std::string& day) {
  if (!db_) return true;
  addSeen_.bind(1, std::int64_t(hash));
  addSeen_.bind(2, day);
  return db_.inTransaction() && addSeen_.run();
}

bool UsageDatabase::hasSeen(std::uint64_t hash) {
  if (!db_) return false;
  hasSeen_.bind(1, std::int64_t(hash));
  const bool found = hasSeen_.stepRow();
  hasSeen_.reset();
  return found;
}

bool UsageDatabase::hasSeenAny() {
  auto statement = db_.prepare("SELECT 1 FROM seen LIMIT 1");
  return statement.stepRow();
}

} // namespace korvell
