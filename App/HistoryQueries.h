#pragma once
// The history as views ask it: every question returns at once, its answer comes on the main queue. Main queue
// only; an answer that comes after this object has ended is dropped.

#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Core/History/HistoryStore.h"

#include <functional>
#include <optional>
#include <vector>

namespace korvell {

/// What a page shows of a range, read in one go.
struct RangeHistory {
  HistoryRange range = HistoryRange::h24;
  ChartSeries chart;
  std::optional<ChartSeries> written;   ///< of the disk: then `chart` is what was read
  std::optional<SeriesSummary> summary; ///< of the metric; nothing without a recorded minute
  std::optional<Date> recordedSince;    ///< the oldest minute of all ranges
  bool isReadable = true;               ///< false: the file can't be read, and `problem` says why
  std::optional<HistoryProblem> problem;
};

class HistoryQueries {
public:
  template <class Answer>
  using Done = std::function<void(const Answer&)>;

  /// The store outlives this object.
  HistoryQueries(Queue& main, HistoryStore& store) : main_(main), store_(store) {}

  void chart(Metric metric, HistoryRange range, int width, Done<ChartSeries> done);
  /// In the range's own stretches.
  void range(Metric metric, HistoryRange range, Done<RangeHistory> done);
  /// The largest first.
  void topApps(Metric metric, HistoryRange range, int limit, Done<std::vector<AppTotal>> done);
  /// Who it was: the largest of a stretch of time first.
  void topApps(Metric metric, Date begin, Date end, int limit, Done<std::vector<AppTotal>> done);
  /// The stored minute that an instant lies in.
  void moment(Date at, Done<std::optional<HistoryMinute>> done);
  /// The mean of the score; nothing where none was recorded since then.
  void averageScore(Date begin, Done<std::optional<double>> done);
  /// Absent when fewer than `minimumMinutes` minutes are recorded since then.
  void average(Metric metric, Date begin, int minimumMinutes, Done<std::optional<double>> done);
  /// `midnight` is when today began.
  void totals(Date midnight, Date now, Done<Totals> done);

private:
  template <class Answer, class Work>
  void ask(Work work, Done<Answer> done);

  Queue& main_;
  HistoryStore& store_;
  Lifeline<HistoryQueries> life_{*this};
};

} // namespace korvell
