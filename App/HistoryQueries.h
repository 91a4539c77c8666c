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

class HistoryQueries {
public:
  template <class Answer>
  using Done = std::function<void(const Answer&)>;

  /// The store outlives this object.
  HistoryQueries(Queue& main, HistoryStore& store) : main_(main), store_(store) {}

  void chart(Metric metric, HistoryRange range, int width, Done<ChartSeries> done);
  /// The largest first.
  void topApps(Metric metric, HistoryRange range, int limit, Done<std::vector<AppTotal>> done);
  /// Who it was: the stored minute that an instant lies in.
  void moment(Date at, Done<std::optional<HistoryMinute>> done);
  /// The mean of the score; nothing where none was recorded since then.
  void averageScore(Date begin, Done<std::optional<double>> done);
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
