#pragma once
// Thirty days of the machine's history: one point a minute for the machine and for the applications that
// mattered in that minute.
//
// Lives on its own queue, "Korvell.history": record() returns at once, queries run on the queue while the
// caller waits (so never from the main thread). Holds the sums of the minute in progress; they are written
// when a sample of another minute arrives, and by close() at an orderly shutdown. A minute that could not
// be stored (the disk is full, another process holds the lock) is kept and tried again with the next one, a
// quarter of an hour at most. Without a database everything answers as if there were no data, and every
// minute tries to open it again; problem() says why. No query answers with minutes of the future.

#include "Base/Queue.h"
#include "Core/History/HistoryDatabase.h"
#include "Core/History/MinuteAccumulator.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

class HistoryStore {
public:
  static constexpr std::string_view fileName = "history.sqlite";

  /// `folder` is Korvell's data folder; a keeper creates it and the file.
  HistoryStore(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder,
               HistoryAccess access = HistoryAccess::keeper);
  ~HistoryStore();
  HistoryStore(const HistoryStore&) = delete;
  HistoryStore& operator=(const HistoryStore&) = delete;

  /// Adds a sample to its minute. A reader records nothing.
  void record(const SystemSnapshot& snapshot, std::optional<int> score);
  /// Writes the minute in progress and closes the database; waits for it. Nothing is recorded afterwards.
  /// False when a minute could not be stored and is lost.
  bool close();

  /// Why nothing is recorded at the moment, as of the last attempt; to a reader, what is the matter with the
  /// file, which it may be able to read all the same.
  std::optional<HistoryProblem> problem();
  const std::string& path() const { return path_; }
  /// False when the answers are empty or short because the file can't be read; a missing file has no rows.
  bool isReadable();
  std::vector<HistoryPoint> series(Metric metric, HistoryRange range);
  /// At most about `width` points.
  ChartSeries chart(Metric metric, HistoryRange range, int width);
  /// The disk's chart in its two parts, of the same stretches.
  struct DiskCharts {
    ChartSeries read, written;
  };
  DiskCharts diskCharts(HistoryRange range, int width);
  /// Of the recorded minutes behind series(); nothing when there are none.
  std::optional<SeriesSummary> summary(Metric metric, HistoryRange range);
  /// The minutes' values of the last `minutes`, the oldest first.
  std::vector<double> recent(Metric metric, int minutes);
  /// The largest first.
  std::vector<AppTotal> topApps(Metric metric, HistoryRange range, int limit);
  /// The same of the minutes that begin in a stretch of time, its end excluded.
  std::vector<AppTotal> topApps(Metric metric, Date begin, Date end, int limit);
  /// When the oldest recorded minute began; nothing without any.
  std::optional<Date> recordedSince();
  /// Absent when fewer than `minimumMinutes` minutes are recorded since then.
  std::optional<double> recordedAverage(Metric metric, Date begin, int minimumMinutes);
  /// 0 when fewer than `minimumMinutes` minutes are recorded since then, or none.
  double average(Metric metric, Date begin, int minimumMinutes);
  /// Absent when no minute since then has a score.
  std::optional<double> averageScore(Date begin);
  /// `column` is a column of bytes a second, "network" or "disk_write".
  double totalBytes(std::string_view column, Date begin);
  /// The stored minute that an instant lies in.
  std::optional<HistoryMinute> minute(Date at);

  /// Runs a task on the history's queue, where the queries above answer without waiting; returns at once.
  /// Those that are left when the store ends are dropped.
  void async(Task task) { queue_->async(std::move(task)); }

private:
  template <class Work>
  auto query(Work&& work);
  void add(HistorySample sample);
  void flush();
  void writeUnwritten();
  HistoryPeriod since(Date begin) const; ///< until now
  HistoryPeriod last(int seconds) const;
  ChartSeries emptyChart(HistoryRange range, int width) const;

  const Clock& clock_;
  HistoryAccess access_;
  std::string path_;
  HistoryDatabase database_;
  MinuteAccumulator accumulator_;
  std::deque<HistoryMinute> unwritten_;
  bool closed_ = false;
  std::unique_ptr<Queue> queue_; ///< last, so that it ends first
};

/// The figures of today, seven and thirty days; `midnight` is when today began.
Totals usageTotals(HistoryStore& history, Date midnight, Date now);

} // namespace korvell
