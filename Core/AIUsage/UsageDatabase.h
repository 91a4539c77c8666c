#pragma once
// The file behind the accounting: token counts per day, tool, model and project, how far each log is read,
// which messages were counted, and the newest plan limits.
//
// A scan writes everything in one transaction that takes the write lock at its beginning, so that of two
// processes one waits for the other, and counts and offsets advance together or not at all. Without an open
// file every write succeeds and stores nothing. Not for several threads at once.

#include "Base/SQLite.h"
#include "Core/AIUsage/CodexLimits.h"
#include "Core/AIUsage/UsageRecords.h"

#include <functional>
#include <unordered_map>

namespace korvell {

struct UsageRow {
  std::string day, tool, model, project;
  Counts counts;
};

class UsageDatabase {
public:
  /// Opens or creates the file and its folder, and deletes what is older than forty days.
  UsageDatabase(const std::string& path, Date now);

  bool isOpen() const { return bool(db_); }
  /// Another version of Korvell has changed the tables: nothing is written.
  bool isForeign() const { return foreign_; }

  std::unordered_map<std::string, FileState> fileStates();
  std::optional<AICodexLimits> limits();
  /// From `day` on, ordered as the database orders them.
  std::vector<UsageRow> rows(const std::string& day);

  /// Waits for other processes; false when it did not get the lock.
  bool begin();
  bool commit();
  void rollback();
  /// True once after another connection changed the file.
  bool changedElsewhere();

  // Inside a transaction; false when the row could not be written, and then the scan can't be kept.
  bool saveFile(const std::string& path, const FileState& state);
  bool addUsage(const Bucket& bucket, const Counts& counts);
  bool saveLimits(const AICodexLimits& limits);
  bool addSeen(std::uint64_t hash, const std::string& day);

  bool hasSeen(std::uint64_t hash);
  bool hasSeenAny();

private:
  bool ensureTables();
  void prune(Date now);
  bool prepareAll();
  std::int64_t number(const char* sql);
  void checkSum(const Bucket& bucket, const Counts& counts);

  Database db_;
  bool foreign_ = false;
  bool ready_ = false;
  std::int64_t version_ = 0; ///< SQLite's own count of other connections' changes
  Statement saveFile_, addUsage_, oneRow_, saveLimits_, addSeen_, hasSeen_;
};

} // namespace korvell
