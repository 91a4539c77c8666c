#include "UI/Measures/MeasureSession.h"

#include "Base/Localization.h"
#include "Core/History/MinuteAccumulator.h"
#include "UI/Kit/ChartRules.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr int mostAsked = 500; ///< a filter finds those that the list has no room for
constexpr Seconds minute{60};
constexpr Seconds tenMinutes{600};
constexpr int enoughMinutes = 8;

/// The history gains a row when another minute begins.
bool mayHaveGained(Date asked, Date now) { return minuteOf(asked) != minuteOf(now); }

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
  cleanUps_ = StorageLog::entries(services_.defaults);
  if (range_ != HistoryRange::live) askRange();
  askAverage();
  rebuild();
}

void MeasureSession::tick() {
  const Date now = services_.model.snapshot->date;
  if (range_ != HistoryRange::live && mayHaveGained(askedAt_, now) && !isLoading()) askRange();
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
                            if (isAnother) self->letGo();
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
  letGo();
  rebuild();
}

/// What was pinned or listed may not be on the new axis.
void MeasureSession::letGo() {
  pinned_.reset();
  wantsRange_ = false;
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
  pinned_ = stopAt(chart_, moment);
  wantsRange_ = false;
  rebuild();
}

void MeasureSession::point(std::optional<Date> moment) {
  if (std::exchange(pointed_, stopAt(chart_, moment)) != pointed_) rebuild();
}

void MeasureSession::showOtherList() {
  wantsRange_ = pinned_ || !wantsRange_;
  pinned_.reset();
  rebuild();
}

/// Applications are recorded by the minute: an instant of the live axis lies in one.
MeasureSession::Past MeasureSession::stretch(Date stop) const {
  if (!history_) return {HistoryRange::live, Date{double(minuteOf(stop))}, minute};
  return {history_->range, stop, chart_.bucket};
}

std::optional<MeasureSession::Past> MeasureSession::wantedPast() const {
  if (!list_.isThere) return std::nullopt;
  if (pinned_) return stretch(*pinned_);
  // The minute that is under way is not recorded yet: who it is stands in the list of now.
  const bool isRecorded = pointed_ && (history_ || mayHaveGained(*pointed_, services_.model.snapshot->date));
  if (isRecorded) return stretch(*pointed_);
  if (wantsRange_ && history_) return Past{.range = history_->range};
  return std::nullopt;
}

void MeasureSession::askApps() {
  const auto wanted = wantedPast();
  const Date now = services_.model.snapshot->date;
  if (wanted && wanted == askedPast_ && !mayHaveGained(appsAt_, now)) return;
  askedPast_ = wanted;
  appsAt_ = now;
  const auto number = ++askedApps_; // answers that are on the way come too late
  if (!wanted) return past_.reset();
  const bool isOver = !wanted->begin || *wanted->begin + wanted->length <= now;
  const auto answered = [watch = life_.watch(), number, of = *wanted,
                         isOver](const std::vector<AppTotal>& totals) {
    auto* self = watch.get();
    if (!self || number != self->askedApps_) return;
    self->past_ = Answer{of, {totals, isOver}};
    self->rebuild();
  };
  if (wanted->begin)
    services_.queries.topApps(metric_, *wanted->begin, *wanted->begin + wanted->length, mostAsked, answered);
  else
    services_.queries.topApps(metric_, wanted->range, mostAsked, answered);
}

void MeasureSession::sort(BarTableData::Column column) {
  const bool isAnother = column != choices_.sorted;
  choices_.isAscending = isAnother ? column == BarTableData::Column::name : !choices_.isAscending;
  choices_.sorted = column;
  choices_.settled.clear();
  rebuild();
  keepOrder(); // the pointer is over the head that was pressed
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
  isSettled_ = settled;
  keepOrder();
  if (!settled) rebuild();
}

void MeasureSession::keepOrder() {
  choices_.settled.clear();
  if (!isSettled_) return;
  for (const auto& row : list_.table.rows)
    if (!row.isPart) choices_.settled.push_back(row.key);
}

void MeasureSession::refresh() {
  if (range_ != HistoryRange::live) askRange();
}

MeasureSession::Listed MeasureSession::listed() const {
  if (!past_) return Listed::now;
  return past_->of.begin ? Listed::moment : Listed::range;
}

std::string MeasureSession::listTitle() const {
  if (!past_) return localized("Applications");
  const auto& [range, begin, length] = past_->of;
  const auto& zone = services_.zone;
  const auto when = !begin                        ? rangeWords(range)
                    : range == HistoryRange::live ? clockText(zone, *begin)
                                                  : spanText(TimeAxis(range), *begin, *begin + length, zone);
  return localized("Top apps, {time}", {{"time", when}});
}

std::string MeasureSession::otherList() const {
  if (!history_) return {};
  const auto words = rangeWords(history_->range);
  if (pinned_) return localized("Show all {range}", {{"range", words}});
  return wantsRange_ ? localized("Show now") : localized("Top apps, {time}", {{"time", words}});
}

void MeasureSession::rebuild() {
  const auto& model = services_.model;
  if (history_)
    chart_ = rangeChart(model, metric_, *history_, cleanUps_, services_.zone);
  else
    chart_ = liveChart(model, services_.directions, metric_, cleanUps_);
  if (pinned_ || pointed_) {
    // They have moved out of the range, or their buckets begin elsewhere now.
    const auto dates = stops(chart_);
    for (auto* moment : {&pinned_, &pointed_})
      if (*moment && !std::binary_search(dates.begin(), dates.end(), **moment)) moment->reset();
  }
  askApps();
  const MeasureBeside beside{
      tenMinutes_, history_ ? recordedSummary(model, metric_, *history_) : liveSummary(model, metric_),
      history_ ? history_->range : HistoryRange::live, temperatureUnit(services_.defaults),
      services_.facts.sources};
  page_ = measurePage(model, metric_, beside);
  makeList();
  askReasons();
  changed_();
}

void MeasureSession::makeList() {
  const auto of = past_ ? std::optional(past_->of) : std::nullopt;
  const bool isAnother = std::exchange(listedPast_, of) != of;
  if (isAnother) choices_.settled.clear(); // another list has an order of its own
  list_ = past_ ? pastAppList(services_.model, metric_, past_->apps, choices_, services_.facts)
                : appList(services_.model, metric_, choices_, services_.facts);
  if (isAnother) keepOrder();
}

/// When a figure is missing here, and again when other ones are: it takes readings of its own.
void MeasureSession::askReasons() {
  const auto& model = services_.model;
  if (!services_.examine || !*model.hasSample || !(isIncomplete(page_) || list_.isUnread)) return;
  std::vector<KnownPart> unknown;
  for (const auto& part : allCases<KnownPart>())
    if (!model.known->has(part.value)) unknown.push_back(part.value);
  if (unknown == examined_) return;
  examined_ = std::move(unknown);
  services_.examine([watch = life_.watch()](const std::vector<SourceReport>& sources) {
    auto* self = watch.get();
    if (!self || self->services_.facts.sources == sources) return;
    self->services_.facts.sources = sources;
    self->rebuild();
  });
}

} // namespace korvell
