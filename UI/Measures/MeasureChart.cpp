#include "UI/Measures/MeasureChart.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Kit/ChartRules.h"
#include "UI/Measures/MeasurePage.h"
#include "UI/Parts/SpokenFigure.h"
#include "UI/Parts/Tiles.h"

#include <algorithm>

namespace korvell {

namespace {

Token tokenOf(Metric metric) { return palette[std::size_t(metric)]; }

std::string nameOf(Metric metric) { return metric == Metric::energy ? localized("Power") : title(metric); }

/// "CPU, last 24 hours, mean 28 percent, maximum 100 percent"
std::string spokenName(Metric metric, HistoryRange range, const std::optional<SeriesSummary>& summary) {
  auto words =
      localized("{measure}, last {range}", {{"measure", nameOf(metric)}, {"range", rangeWords(range)}});
  if (!summary) return words;
  const auto unit = metricUnit(metric);
  return words + ", " +
         localized("mean {mean}, maximum {maximum}", {{"mean", spokenFigure(unit, summary->mean)},
                                                      {"maximum", spokenFigure(unit, summary->maximum)}});
}

ChartData chartOf(const Model& model, Metric metric, TimeAxis time) {
  ChartData data{.time = time, .scale = scaleOf(metric)};
  if (metric == Metric::memory) data.total = double(model.snapshot->memory.total);
  return data;
}

ChartBucket instant(Date date, double value) { return {date, value, value, value}; }

/// Two lines of a chart from one member each.
std::vector<ChartLine> directionLines(const std::vector<DirectionPoint>& points, Metric metric) {
  const bool isDisk = metric == Metric::disk;
  ChartLine first{isDisk ? localized("Read") : localized("Down"), tokenOf(metric), {}};
  ChartLine second{isDisk ? localized("Written") : localized("Up"), Token::gray, {}};
  for (const auto& point : points) {
    first.buckets.push_back(instant(point.date, isDisk ? point.read : point.in));
    second.buckets.push_back(instant(point.date, isDisk ? point.written : point.out));
  }
  return {std::move(first), std::move(second)};
}

ChartLine lineOf(std::string name, Token token, const ChartSeries& series) {
  ChartLine line{std::move(name), token, {}};
  for (const auto& point : series.points)
    line.buckets.push_back({point.date, point.minimum, point.mean, point.maximum});
  return line;
}

bool concerns(HealthAlert::Kind kind, Metric metric) {
  switch (kind) {
  case HealthAlert::Kind::cpu:
    return metric == Metric::cpu;
  case HealthAlert::Kind::memoryGrowth:
  case HealthAlert::Kind::memoryPressure:
    return metric == Metric::memory;
  case HealthAlert::Kind::disk:
  case HealthAlert::Kind::diskSpace:
    return metric == Metric::disk;
  case HealthAlert::Kind::network:
    return metric == Metric::network;
  case HealthAlert::Kind::aiPlanLimit:
    return false;
  }
  return false;
}

void addEvents(ChartData& data, const Model& model, Metric metric, const std::vector<FreedEntry>& cleanUps) {
  const auto add = [&](ChartEvent event) {
    if (event.date >= data.begin && event.date <= data.end) data.events.push_back(std::move(event));
  };
  for (const auto& alert : *model.alerts)
    if (concerns(alert.kind, metric)) add({ChartEvent::Kind::alert, alert.date, alert.title});
  for (const auto& entry : cleanUps)
    add({ChartEvent::Kind::cleanUp, entry.date,
         localized("{size} freed", {{"size", Format::bytes(double(entry.bytes))}})});
  for (const auto& gap : gaps(data))
    if (gap.end < data.end) add({ChartEvent::Kind::start, gap.end, localized("Recording began again")});
  std::stable_sort(data.events.begin(), data.events.end(),
                   [](const ChartEvent& a, const ChartEvent& b) { return a.date < b.date; });
}

std::string sinceText(Date since, Date now, const TimeZone& zone) {
  const auto days = localDay(zone, now).number - localDay(zone, since).number;
  const auto time = clockText(zone, since);
  if (days <= 0) return localized("Korvell has recorded since today, {time}.", {{"time", time}});
  if (days == 1) return localized("Korvell has recorded since yesterday, {time}.", {{"time", time}});
  return localized("Korvell has recorded since {day}.", {{"day", shownDay(localDay(zone, since))}});
}

void setEmpty(ChartData& data, std::string sentence, std::string detail = {}) {
  data.state = ChartData::State::empty;
  data.lines.clear();
  data.sentence = std::move(sentence);
  data.detail = std::move(detail);
}

std::string unmeasured(Metric metric) {
  return metric == Metric::gpu      ? localized("The GPU does not tell its load here.")
         : metric == Metric::energy ? localized("Nothing here tells how much power it draws.")
                                    : localized("This can't be measured here.");
}

} // namespace

KnownPart partOf(Metric metric) {
  static constexpr KnownPart parts[] = {KnownPart::processor, KnownPart::memory,   KnownPart::disks,
                                        KnownPart::network,   KnownPart::graphics, KnownPart::power};
  return parts[std::size_t(metric)];
}

bool isMeasured(const Model& model, Metric metric) { return model.known->has(partOf(metric)); }

std::optional<SeriesSummary> liveSummary(const Model& model, Metric metric) {
  const auto found = model.live->find(metric);
  if (found == model.live->end() || found->second.empty() || !isMeasured(model, metric)) return std::nullopt;
  SeriesSummary summary{found->second.front().value, 0, found->second.front().value};
  for (const auto& point : found->second) {
    summary.minimum = std::min(summary.minimum, point.value);
    summary.maximum = std::max(summary.maximum, point.value);
    summary.mean += point.value / double(found->second.size());
  }
  return summary;
}

ChartData liveChart(const Model& model, const LiveDirections& directions, Metric metric,
                    const std::vector<FreedEntry>& cleanUps) {
  auto data = chartOf(model, metric, TimeAxis::live);
  data.end = model.snapshot->date;
  data.begin = data.end - Model::liveSpan;
  data.spoken = spokenName(metric, HistoryRange::live, liveSummary(model, metric));
  if (!*model.hasSample) return data;
  if (!isMeasured(model, metric)) {
    setEmpty(data, unmeasured(metric));
    return data;
  }
  data.state = ChartData::State::recorded;
  if (metric == Metric::disk || metric == Metric::network) {
    data.lines = directionLines(directions.points(), metric);
  } else {
    ChartLine line{nameOf(metric), tokenOf(metric), {}};
    if (const auto found = model.live->find(metric); found != model.live->end())
      for (const auto& point : found->second) line.buckets.push_back(instant(point.date, point.value));
    data.lines = {std::move(line)};
  }
  addEvents(data, model, metric, cleanUps);
  return data;
}

std::optional<SeriesSummary> recordedSummary(const Model& model, Metric metric, const RangeHistory& history) {
  const bool isTold = !*model.hasSample || isMeasured(model, metric);
  return isTold || (history.summary && history.summary->maximum > 0) ? history.summary : std::nullopt;
}

ChartData rangeChart(const Model& model, Metric metric, const RangeHistory& history,
                     const std::vector<FreedEntry>& cleanUps, const TimeZone& zone) {
  auto data = chartOf(model, metric, TimeAxis(history.range));
  data.begin = history.chart.begin;
  data.end = history.chart.end;
  data.bucket = history.chart.stretch;
  const auto summary = recordedSummary(model, metric, history);
  data.spoken = spokenName(metric, history.range, summary);
  if (!history.isReadable) {
    setEmpty(data, localized("The history can't be read."), history.problem ? history.problem->detail : "");
    data.state = ChartData::State::unreadable;
    return data;
  }
  if (history.chart.points.empty()) {
    setEmpty(data, localized("Nothing was recorded in this time."),
             history.recordedSince ? sinceText(*history.recordedSince, data.end, zone) : "");
    return data;
  }
  if (!summary && history.summary) {
    setEmpty(data, unmeasured(metric));
    return data;
  }
  data.state = ChartData::State::recorded;
  const auto token = tokenOf(metric);
  if (history.written)
    data.lines = {lineOf(localized("Read"), token, history.chart),
                  lineOf(localized("Written"), Token::gray, *history.written)};
  else
    data.lines = {lineOf(metric == Metric::network ? localized("Mean, down and up") : localized("Mean"),
                         token, history.chart)};
  addEvents(data, model, metric, cleanUps);
  return data;
}

} // namespace korvell
