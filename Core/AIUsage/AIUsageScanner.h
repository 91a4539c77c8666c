#pragma once
// Brings the usage database up to date by reading what the tools' logs gained since the last scan.
//
// Lives on the queue "Korvell.aiUsage". A scan is one transaction: killed at any moment, or failing, it
// leaves no trace, and the next one reads the same bytes again. Two processes may scan the same logs into
// the same database; the second waits for the first and takes over what it wrote. A damaged database is put
// aside and counted anew from the logs.

#include "Base/UserFolders.h"
#include "Core/AIUsage/Scan.h"
#include "Core/AIUsage/UsageSummary.h"

namespace korvell {

class AIUsageScanner {
public:
  struct Options {
    std::string cacheURL;              ///< the database's path
    std::string claudeRoot, codexRoot; ///< the logs are below them
    std::string home;                  ///< the project "Home"
    Cancellation cancellation = {};    ///< ends a scan soon and without a trace
    int threads = 2;                   ///< at most; small scans use one
  };
  enum class Outcome {
    done,
    locked, ///< another process held the database for too long
    cancelled,
    full,    ///< no room on the disk for the database
    failed,  ///< the database can't be opened or written
    foreign, ///< the database was changed by another version of Korvell
  };

  /// "ai-usage.sqlite" in Korvell's data folder.
  static std::string defaultCacheURL(const UserFolders& folders);
  /// That, and the logs below the home folder.
  static Options defaults(const UserFolders& folders);

  AIUsageScanner(Options options, LogFiles& files, TimeZone& zone, const Clock& clock);

  /// Scans. Whatever the outcome, nothing is lost: what was not stored is read again by the next call. The
  /// progress tells bytes of new bytes in all.
  using Progress = std::function<void(std::int64_t bytes, std::int64_t of)>;
  AIScanStats refresh(Date now, const Progress& progress = {});
  Outcome lastOutcome() const { return outcome_; }
  /// Where a damaged database was put.
  const std::optional<std::string>& putAside() const { return database_.putAside(); }

  /// Of so many days up to today; days and readings that lie ahead of `now` are left out until they come.
  AIUsageSummary summary(int days, Date now);
  const std::optional<AICodexLimits>& latestLimits() const { return readings_.latest; }

private:
  std::vector<LogFile> logFiles(const std::string& root) { return files_.list(root, "jsonl"); }
  std::vector<ScanTask> newBytes(Date now, AIScanStats& stats);
  FileState initialState(AITool tool, const std::string& path) const;
  Outcome scan(Date now, const Progress& progress, AIScanStats& stats, Seconds& helpers);
  bool load();
  Outcome failure() const;

  Options options_;
  LogFiles& files_;
  TimeZone& zone_;
  const Clock& clock_;
  UsageDatabase database_;
  std::unordered_map<std::string, FileState> states_;
  PlanReadings readings_;
  bool loaded_ = false; ///< the states are those of the database
  Outcome outcome_ = Outcome::done;
};

} // namespace korvell
