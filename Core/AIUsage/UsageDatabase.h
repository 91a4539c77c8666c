#pragma once
// The file behind the accounting: token counts per day, tool, model and project, how far each log is read,
// which messages were counted, and the newest plan limits.
//
// A scan writes everything in one transaction that takes the write lock at its beginning, so that of two
// processes one waits for the other, and counts and offsets advance together or not at all: the first
// statement of it that fails makes the commit fail. A file that turns out to be damaged is put aside as
// "ai-usage-damaged-DATE.sqlite" and a new one begun, which the next scan fills from the logs. Without an
// open file writes do nothing. Not for several threads at once.

#include "Base/Cancellation.h"
#include "Base/SQLite.h"
#include "Core/AIUsage/CodexLimits.h"
#include "Core/AIUsage/UsageRecords.h"

#include <functional>
#include <span>
#include <unordered_map>

namespace korvell {

struct UsageRow {
  std::string day, tool, model, project;
  Counts counts;
};

class UsageDatabase {
public:
  /// Why a transaction could not begin, or can't be kept.
  enum class Problem {
    none,
    locked,  ///< another process holds the file for too long
    full,    ///< no room on the disk
    foreign, ///< another version of Korvell has changed the tables: nothing is written
    damaged, ///< the next begin() puts the file aside
    unusable ///< it can't be opened, read or written
  };

  /// Opens or creates the file and its folder, and deletes what is older than forty days: by the clock and
  /// by the newest trusted day that has come, so that a clock that is ahead for a while deletes nothing.
  UsageDatabase(std::string path, Date now);

  bool isOpen() const { return bool(db_); }
  Problem problem() const { return problem_; }
  /// Where a damaged file was put.
  const std::optional<std::string>& putAside() const { return putAside_; }

  /// Nothing when they could not all be read.
  std::optional<std::unordered_map<std::string, FileState>> fileStates();
  PlanReadings limits();
  /// From `day` on, ordered as the database orders them.
  std::vector<UsageRow> rows(const std::string& day);

  /// Begins the transaction of a scan: opens the file anew where it is not open, was moved or is damaged, and
  /// waits for other processes for ten seconds. False when there is a problem; true, too, without a file.
  bool begin(Date now, const Cancellation& cancellation);
  /// False when anything since begin() could not be written or read.
  bool commit();
  void rollback();
  /// True once after another connection changed the file, or it is another file.
  bool changedElsewhere();

  // Inside a transaction.
  void saveFile(const std::string& path, const FileState& state);
  void addUsage(const Bucket& bucket, const Counts& counts);
  void saveLimits(const PlanReadings& limits);
  void addSeen(std::span<const std::int64_t> hashes, const std::string& day);

  /// The day for the keys of a scan: today, or the newest trusted day where the clock is more than a week
  /// behind it, because the oldest keys are deleted first.
  CalendarDay seenDay(CalendarDay today);
  bool hasSeen(std::uint64_t hash);
  bool hasSeenAny();

private:
  void open();
  void close();
  bool renew(Date now);
  bool ensureTables();
  bool prepareAll();
  void prune(Date now);
  /// The newest day of usage before `end` that no wrong clock has invented: days after more than a week
  /// without usage count only once there are seven of them.
  std::optional<CalendarDay> newestTrusted(std::string end);
  std::int64_t number(const char* sql);
  std::optional<AICodexLimits> reading(std::string_view key);
  Counts stored(const Bucket& bucket);

  // What fails is remembered as the problem, the first failure of a transaction only.
  void note(int code);
  bool execute(const char* sql);
  bool row(Statement& statement);
  void write(Statement& statement);

  std::string path_;
  Database db_;
  Problem problem_ = Problem::none;
  std::optional<std::string> putAside_;
  bool ready_ = false;
  std::int64_t version_ = 0; ///< SQLite's own count of other connections' changes
  Statement saveFile_, addUsage_, oneRow_, saveValue_, addSeen_, hasSeen_;
};

} // namespace korvell
