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
    : clock_(clock), access_(access), database_(folder + "/" + std::string(fileName), access),
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

void HistoryStore::close() {
  queue_->sync([this] {
    if (!std::exchange(closed_, true)) flush();
    database_.close();
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

std::int64_t HistoryStore::secondsAgo(int seconds) const {
  return wholeSeconds(clock_.now() - Seconds{double(seconds)});
}

template <class Work>
auto HistoryStore::query(Work&& work) {
  return syncResult(*queue_, [&] { return work(database_); });
}

std::vector<HistoryPoint> HistoryStore::series(Metric metric, HistoryRange range) {
  return query([&](HistoryDatabase& database) {
    const auto span = spanOf(range);
    return database.series(metric, secondsAgo(span.seconds), span.bucket);
  });
}

std::optional<SeriesSummary> HistoryStore::summary(Metric metric, HistoryRange range) {
  return query(
      [&](HistoryDatabase& database) { return database.summary(metric, secondsAgo(spanOf(range).seconds)); });
}

bool HistoryStore::isReadable() {
  return query([](HistoryDatabase& database) { return database.isReadable(); });
}

std::vector<double> HistoryStore::recent(Metric metric, int minutes) {
  return query([&](HistoryDatabase& database) { return database.recent(metric, secondsAgo(minutes * 60)); });
}

std::vector<AppTotal> HistoryStore::topApps(Metric metric, HistoryRange range, int limit) {
  return query([&](HistoryDatabase& database) {
    return database.topApps(metric, secondsAgo(spanOf(range).seconds), std::size_t(std::max(limit, 0)),
                            range == HistoryRange::d30);
  });
}

double HistoryStore::average(Metric metric, Date since, int minimumMinutes) {
  return query([&](HistoryDatabase& database) {
    return database.average(metric, wholeSeconds(since), minimumMinutes);
  });
}

std::optional<double> HistoryStore::averageScore(Date since) {
  return query([&](HistoryDatabase& database) { return database.averageScore(wholeSeconds(since)); });
}

double HistoryStore::totalBytes(std::string_view column, Date since) {
  return query([&](HistoryDatabase& database) { return database.totalBytes(column, wholeSeconds(since)); });
}

std::optional<HistoryMinute> HistoryStore::minute(Date at) {
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
