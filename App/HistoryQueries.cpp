#include "App/HistoryQueries.h"

namespace korvell {

template <class Answer, class Work>
void HistoryQueries::ask(Work work, Done<Answer> done) {
  store_.async([&store = store_, &main = main_, watch = life_.watch(), work = std::move(work),
                done = std::move(done)] {
    main.async([watch, answer = work(store), done] {
      if (watch.get()) done(answer);
    });
  });
}

void HistoryQueries::chart(Metric metric, HistoryRange range, int width, Done<ChartSeries> done) {
  ask([=](HistoryStore& store) { return store.chart(metric, range, width); }, std::move(done));
}

void HistoryQueries::range(Metric metric, HistoryRange range, Done<RangeHistory> done) {
  const auto work = [=](HistoryStore& store) {
    const int width = spanOf(range).seconds / spanOf(range).bucket;
    RangeHistory history{.range = range};
    if (metric == Metric::disk) {
      auto charts = store.diskCharts(range, width);
      history.chart = std::move(charts.read);
      history.written = std::move(charts.written);
    } else {
      history.chart = store.chart(metric, range, width);
    }
    history.summary = store.summary(metric, range);
    history.recordedSince = store.recordedSince();
    history.isReadable = store.isReadable();
    history.problem = store.problem();
    return history;
  };
  ask(work, std::move(done));
}

void HistoryQueries::topApps(Metric metric, HistoryRange range, int limit, Done<std::vector<AppTotal>> done) {
  ask([=](HistoryStore& store) { return store.topApps(metric, range, limit); }, std::move(done));
}

void HistoryQueries::topApps(Metric metric, Date begin, Date end, int limit,
                             Done<std::vector<AppTotal>> done) {
  ask([=](HistoryStore& store) { return store.topApps(metric, begin, end, limit); }, std::move(done));
}

void HistoryQueries::moment(Date at, Done<std::optional<HistoryMinute>> done) {
  ask([=](HistoryStore& store) { return store.minute(at); }, std::move(done));
}

void HistoryQueries::averageScore(Date begin, Done<std::optional<double>> done) {
  ask([=](HistoryStore& store) { return store.averageScore(begin); }, std::move(done));
}

void HistoryQueries::average(Metric metric, Date begin, int minimumMinutes,
                             Done<std::optional<double>> done) {
  ask([=](HistoryStore& store) { return store.recordedAverage(metric, begin, minimumMinutes); },
      std::move(done));
}

void HistoryQueries::totals(Date midnight, Date now, Done<Totals> done) {
  ask([=](HistoryStore& store) { return usageTotals(store, midnight, now); }, std::move(done));
}

} // namespace korvell
