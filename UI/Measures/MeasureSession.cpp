#include "UI/Measures/MeasureSession.h"

#include "Base/Localization.h"
#include "UI/Kit/ChartRules.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvell {

namespace {

constexpr int mostPastApps = 20;
constexpr Seconds minute{60}; ///< the history gains a row so often
constexpr Seconds tenMinutes{600};
constexpr int enoughMinutes = 8;

/// The smallest range that reaches back so far.
HistoryRange rangeReaching(Seconds ago) {
  for (const auto& span : historySpans)
    if (span.range != HistoryRange::live && ago <= Seconds{double(span.seconds)}) return span.range;
  return HistoryRange::d30;
}

} // namespace

MeasureSession::MeasureSession(Services services, Metric metric, HistoryRange range,
                               std::function<void()> changed)
    : services_(services), metric_(metric), changed_(std::move(changed)), range_(range),
      cycles_(services.model.cycle.observe([this](std::int64_t) { tick(); })) {
  if (range_ != HistoryRange::live) askRange();
  askAverage();
  rebuild();
}

void MeasureSession::tick() {
  const Date now = services_.model.snapshot->date;
  if (range_ != HistoryRange::live && isDue(askedAt_, minute, now) && !isLoading()) askRange();
  askAverage();
  rebuild();
}

void MeasureSession::askAverage() {
  const Date now = services_.model.snapshot->date;
  if (metric_ != Metric::cpu || !isDue(averageAt_, minute, now)) return;
  averageAt_ = now;
  services_.queries.average(Metric::cpu, now - tenMinutes, enoughMinutes,
                            [watch = life_.watch()](const std::optional<double>& mean) {
                              auto* self = watch.get();
                              if (!self || self->tenMinutes_ == mean) return;
                              self->tenMinutes_ = mean;
                              self->rebuild();
                            });
}

void MeasureSession::askRange() {
  askedAt_ = services_.model.snapshot->date;
  services_.queries.range(metric_, range_,
                          [watch = life_.watch(), number = ++asked_](const RangeHistory& history) {
                            auto* self = watch.get();
                            // Another range was chosen meanwhile: its answer is on the way.
                            if (!self || number != self->asked_) return;
                            self->answered_ = number;
                            const bool isAnother = !self->history_ || self->history_->range != history.range;
                            self->history_ = history;
                            self->cleanUps_ = StorageLog::entries(self->services_.defaults);
                            if (isAnother) self->listNow();
                            self->rebuild();
                            if (self->wanted_) self->pin(std::exchange(self->wanted_, std::nullopt));
                          });
}

void MeasureSession::setRange(HistoryRange range) {
  if (range == range_) return;
  range_ = range;
  wanted_.reset();
  if (range != HistoryRange::live) {
    askRange();
    return changed_();
  }
  answered_ = asked_ = asked_ + 1; // answers that are on the way come too late
  history_.reset();
  listNow();
  rebuild();
}

/// The applications of the moment, and no pin: what was pinned may not be on the new axis.
void MeasureSession::listNow() {
  pinned_.reset();
  listed_ = Listed::now;
  past_.clear();
  ++askedApps_;
}

void MeasureSession::show(Date moment) {
  const auto range = rangeReaching(services_.model.snapshot->date - moment);
  wanted_ = moment;
  if (range == range_ && history_) return pin(std::exchange(wanted_, std::nullopt));
  range_ = range;
  askRange();
  changed_();
}

void MeasureSession::restore(HistoryRange range, std::optional<Date> pinned) {
  setRange(range);
  if (!pinned) return;
  if (range_ == HistoryRange::live || !isLoading())
    pin(pinned);
  else
    wanted_ = pinned;
}

void MeasureSession::pin(std::optional<Date> moment) {
  const auto dates = stops(chart_);
  const auto stop = moment ? nearestStop(chart_, dates, *moment) : std::nullopt;
  pinned_ = stop ? std::optional(dates[*stop]) : std::nullopt;
  if (pinned_)
    listed_ = Listed::moment;
  else if (listed_ == Listed::moment)
    listNow();
  if (pinned_) askApps();
  rebuild();
}

void MeasureSession::showOtherList() {
  if (listed_ == Listed::range) {
    listNow();
  } else {
    pinned_.reset();
    listed_ = Listed::range;
    askApps();
  }
  rebuild();
}

void MeasureSession::askApps() {
  const auto answered = [watch = life_.watch(), number = ++askedApps_](const std::vector<AppTotal>& apps) {
    auto* self = watch.get();
    if (!self || number != self->askedApps_) return;
    self->past_ = apps;
    self->rebuild();
  };
  if (listed_ == Listed::range) return services_.queries.topApps(metric_, range_, mostPastApps, answered);
  // Applications are recorded by the minute: an instant of the live axis lies in one.
  const bool isInstant = chart_.bucket <= Seconds{0};
  const Date begin = isInstant ? Date{std::floor(pinned_->sinceEpoch / 60) * 60} : *pinned_;
  services_.queries.topApps(metric_, begin, begin + (isInstant ? minute : chart_.bucket), mostPastApps,
                            answered);
}

void MeasureSession::sort(BarTableData::Column column) {
  const bool isAnother = column != choices_.sorted;
  choices_.isAscending = isAnother ? column == BarTableData::Column::name : !choices_.isAscending;
  choices_.sorted = column;
  choices_.settled.clear();
  rebuild();
}

void MeasureSession::filter(std::string text) {
  choices_.filter = std::move(text);
  rebuild();
}

void MeasureSession::unfold(const std::string& key) {
  if (choices_.unfolded.erase(key) == 0) choices_.unfolded.insert(key);
  rebuild();
}

void MeasureSession::settle(bool settled) {
  choices_.settled.clear();
  if (settled)
    for (const auto& row : list_.table.rows)
      if (!row.isPart) choices_.settled.push_back(row.key);
  if (!settled) rebuild();
}

void MeasureSession::refresh() {
  if (range_ != HistoryRange::live) askRange();
}

std::string MeasureSession::listTitle() const {
  if (listed_ == Listed::now) return localized("Applications");
  if (listed_ == Listed::range) return localized("Top apps, {time}", {{"time", rangeWords(range_)}});
  const auto& zone = services_.zone;
  const auto when = chart_.bucket > Seconds{0}
                        ? spanText(chart_.time, *pinned_, *pinned_ + chart_.bucket, zone)
                        : clockText(zone, *pinned_);
  return localized("Top apps, {time}", {{"time", when}});
}

std::string MeasureSession::otherList() const {
  if (listed_ == Listed::range) return localized("Show now");
  if (!history_) return {};
  return listed_ == Listed::moment ? localized("Show all {range}", {{"range", rangeWords(history_->range)}})
                                   : localized("Top apps, {time}", {{"time", rangeWords(history_->range)}});
}

void MeasureSession::rebuild() {
  const auto& model = services_.model;
  if (history_)
    chart_ = rangeChart(model, metric_, *history_, cleanUps_, services_.zone);
  else
    chart_ = liveChart(model, services_.directions, metric_);
  if (pinned_) {
    // It has moved out of the range, or its bucket begins elsewhere now.
    const auto dates = stops(chart_);
    if (!std::binary_search(dates.begin(), dates.end(), *pinned_)) listNow();
  }
  const MeasureBeside beside{tenMinutes_, history_ ? history_->summary : liveSummary(model, metric_),
                             history_ ? history_->range : HistoryRange::live,
                             temperatureUnit(services_.defaults)};
  page_ = measurePage(model, metric_, beside);
  list_ = listed_ == Listed::now ? appList(model, metric_, choices_, services_.facts)
                                 : pastAppList(metric_, past_, choices_);
  changed_();
}

} // namespace korvell
