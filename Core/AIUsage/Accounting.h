#pragma once
// One scan's sums on their way into the database: events of all files, merged in the files' order.

#include "Core/AIUsage/LineRules.h"
#include "Core/AIUsage/UsageDatabase.h"

#include <map>

namespace korvell {

/// Which messages were counted, in this scan and before. New keys stay in memory, where they are looked up,
/// and go to the database in sorted portions: that costs it a fraction of what it takes to insert them one by
/// one in the order of a hash, and while one thread does it, others go on reading.
class SeenKeys {
public:
  SeenKeys(UsageDatabase& database, std::string scanDay);
  /// True once for each key.
  bool isFirstSighting(std::uint64_t key);
  /// Writes what is not yet written.
  void flush();
  /// Fetches what isFirstSighting() will look at: most of it is too far away to wait for.
  void prepare(std::uint64_t key) const;

private:
  std::uint64_t& slot(std::uint64_t key);
  void makeRoom();

  UsageDatabase& database_;
  std::string scanDay_;
  bool anyStored_;                   ///< the database holds keys that are not in the table
  std::vector<std::uint64_t> slots_; ///< open addressing; 0 is free
  std::size_t used_ = 0;
  bool zeroSeen_ = false;
  std::vector<std::int64_t> unwritten_;
};

class Accounting {
public:
  Accounting(UsageDatabase& database, std::string scanDay, PlanReadings limits, Date now);

  /// Takes part of a file's events; `state` is the file's and is advanced.
  void merge(AITool tool, FileState& state, const EventBatch& batch);
  void finishFile(const std::string& path, const FileState& state);
  /// Writes what is still in memory.
  void flush();

  /// Something could not be written: the transaction is of no use.
  bool failed() const { return database_.isOpen() && database_.problem() != UsageDatabase::Problem::none; }
  std::int64_t records() const { return records_; }
  const PlanReadings& limits() const { return limits_; }
  /// The states of all finished files.
  const std::map<std::string, FileState>& states() const { return states_; }

private:
  void add(const Bucket& bucket, const Counts& counts);
  void flushUsage();

  UsageDatabase& database_;
  SeenKeys seen_;
  PlanReadings limits_, storedLimits_;
  Date now_;
  std::map<std::string, FileState> states_;
  StringPool models_, projects_;
  std::unordered_map<Bucket, Counts, BucketHash> pending_;
  std::int64_t records_ = 0;
};

} // namespace korvell
