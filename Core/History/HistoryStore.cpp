#include "Core/History/HistoryStore.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr std::size_t unwrittenMinutes = 15;

std::int64_t wholeSeconds(Date date) { return std::int64_t(date.sinceEpoch); }

} // namespace

HistoryStore::HistoryStore(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder,
                           HistoryAccess access)
    : clock_(clock), access_(access), path_(folder + "/" + std::string(fileName)), database_(path_, access),
      queue_(makeQueue("Korvell.history")) {
  queue_->async([this] { database_.ensureOpen(clock_.now()); });
}

HistoryStore::~HistoryStore() { close(); }

void HistoryStore::record(const SystemSnapshot& snapshot, std::optional<int> score) {
  if (access_ == HistoryAccess::reader) return;
  // Reduced here, so that neither queue copies a whole snapshot.
  auto sample = std::make_shared<HistorySample>(historySample(snapshot, score));
  queue_->async([this, sample] { add(std::move(*sample)); });
}

bool HistoryStore::close() {
  return syncResult(*queue_, [this] {
    if (!std::exchange(closed_, true)) flush();
    database_.close();
    return unwritten_.empty();
  });
}

void HistoryStore::add(HistorySample sample) {
  if (closed_) return;
  if (!accumulator_.isEmpty() && accumulator_.minute() != minuteOf(sample.date)) flush();
  accumulator_.add(std::move(sample));
}

void HistoryStore::flush() {
  if (accumulator_.isEmpty()) return;
  unwritten_.push_back(accumulator_.take());
  if (unwritten_.size() > unwrittenMinutes) unwritten_.pop_front();
  writeUnwritten();
}

void HistoryStore::writeUnwritten() {
  // Twice at most: when writing finds the file damaged, the minutes go into the one that takes its place.
  for (int attempt = 0; attempt < 2 && !unwritten_.empty(); ++attempt) {
    if (!database_.ensureOpen(clock_.now())) return;
    while (!unwritten_.empty() && database_.write(unwritten_.front())) unwritten_.pop_front();
    if (!database_.isDamaged()) return;
  }
}

HistoryPeriod HistoryStore::since(Date begin) const {
  return {wholeSeconds(begin), wholeSeconds(clock_.now())};
}

HistoryPeriod HistoryStore::last(int seconds) const { return since(clock_.now() - Seconds{double(seconds)}); }

template <class Work>
auto HistoryStore::query(Work&& work) {
  return syncResult(*queue_, [&] { return work(database_); });
}

std::vector<HistoryPoint> HistoryStore::series(Metric metric, HistoryRange range) {
  return query([&](HistoryDatabase& database) {
    const auto span = spanOf(range);
    return database.series(metric, last(span.seconds), span.bucket);
  });
}

ChartSeries HistoryStore::emptyChart(HistoryRange range, int width) const {
  constexpr int minute = 60;
  const auto span = spanOf(range);
  const int minutes = std::max(1, span.seconds / minute / std::max(width, 1));
  const Date now = clock_.now();
  return {now - Seconds{double(span.seconds)}, now, Seconds{double(minutes * minute)}, {}};
}

ChartSeries HistoryStore::chart(Metric metric, HistoryRange range, int width) {
  return query([&](HistoryDatabase& database) {
    auto chart = emptyChart(range, width);
    chart.points = database.chart(metric, since(chart.begin), int(chart.stretch.count()));
    return chart;
  });
}

HistoryStore::DiskCharts HistoryStore::diskCharts(HistoryRange range, int width) {
  return query([&](HistoryDatabase& database) {
    const auto chart = emptyChart(range, width);
    DiskCharts charts{chart, chart};
    charts.read.points = database.readChart(since(chart.begin), int(chart.stretch.count()));
    charts.written.points = database.writtenChart(since(chart.begin), int(chart.stretch.count()));
    return charts;
  });
}

std::optional<SeriesSummary> HistoryStore::summary(Metric metric, HistoryRange range) {
  return query(
      [&](HistoryDatabase& database) { return database.summary(metric, last(spanOf(range).seconds)); });
}

std::optional<HistoryProblem> HistoryStore::problem() {
  return query([this](HistoryDatabase& database) -> std::optional<HistoryProblem> {
    const auto fault = database.fault();
    if (!fault) return std::nullopt;
    return HistoryProblem{*fault, sentence(*fault, path_)};
  });
}

bool HistoryStore::isReadable() {
  return query([](HistoryDatabase& database) { return database.isReadable(); });
}

std::vector<double> HistoryStore::recent(Metric metric, int minutes) {
  return query([&](HistoryDatabase& database) { return database.recent(metric, last(minutes * 60)); });
}

std::vector<AppTotal> HistoryStore::topApps(Metric metric, HistoryRange range, int limit) {
  return query([&](HistoryDatabase& database) {
    return database.topApps(metric, last(spanOf(range).seconds), std::size_t(std::max(limit, 0)));
  });
}

std::vector<AppTotal> HistoryStore::topApps(Metric metric, Date begin, Date end, int limit) {
  return query([&](HistoryDatabase& database) {
    const HistoryPeriod period{wholeSeconds(begin), wholeSeconds(std::min(end, clock_.now())) - 1};
    return database.topApps(metric, period, std::size_t(std::max(limit, 0)));
  });
}

std::optional<Date> HistoryStore::recordedSince() {
  return query([](HistoryDatabase& database) { return database.oldest(); });
}

std::optional<double> HistoryStore::recordedAverage(Metric metric, Date begin, int minimumMinutes) {
  return query(
      [&](HistoryDatabase& database) { return database.average(metric, since(begin), minimumMinutes); });
}

double HistoryStore::average(Metric metric, Date begin, int minimumMinutes) {
  return recordedAverage(metric, begin, minimumMinutes).value_or(0);
}

std::optional<double> HistoryStore::averageScore(Date begin) {
  return query([&](HistoryDatabase& database) { return database.averageScore(since(begin)); });
}

double HistoryStore::totalBytes(std::string_view column, Date begin) {
  return query([&](HistoryDatabase& database) { return database.totalBytes(column, since(begin)); });
}

std::optional<HistoryMinute> HistoryStore::minute(Date at) {
  if (at > clock_.now()) return std::nullopt;
  return query([&](HistoryDatabase& database) { return database.minute(minuteOf(at)); });
}

Totals usageTotals(HistoryStore& history, Date midnight, Date now) {
  return {.cpuToday = history.average(Metric::cpu, midnight, 0),
          .diskWrittenToday = history.totalBytes("disk_write", midnight),
          .networkToday = history.totalBytes("network", midnight),
          .network7Days = history.totalBytes("network", now - Seconds{604'800}),
          .network30Days = history.totalBytes("network", now - Seconds{2'592'000})};
}

} // namespace korvell
