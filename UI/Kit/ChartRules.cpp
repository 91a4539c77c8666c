#include "UI/Kit/ChartRules.h"

#include "Base/Format.h"
#include "Base/Localization.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double gigabyte = 1024.0 * 1024 * 1024;
constexpr Seconds liveGap{25}; ///< twice the slow pace, and a little
/// The minute in progress and the one that is being written are not in the history yet.
constexpr Seconds unwritten{150};
constexpr double tooNearTotal = 0.08; ///< of the axis: two labels there would touch

Unit unitOf(ValueScale scale) {
  switch (scale) {
  case ValueScale::percent:
    return Unit::percent;
  case ValueScale::memory:
    return Unit::memory;
  case ValueScale::rate:
    return Unit::bytesPerSecond;
  case ValueScale::watts:
    return Unit::watts;
  }
  return Unit::none;
}

/// Where a number ends and its unit begins.
std::size_t numberEnd(const std::string& text) {
  const auto end = text.find_first_not_of("0123456789.,-");
  return end == std::string::npos ? text.size() : end;
}

/// "4.00 GB" is "4 GB" beside a gridline.
std::string withoutIdleZeros(std::string text) {
  const auto end = numberEnd(text);
  const auto point = text.find(currentLanguage().numbers.decimal);
  if (point == std::string::npos || point > end) return text;
  auto kept = text.find_last_not_of('0', end - 1);
  if (kept == point) --kept;
  return text.erase(kept + 1, end - kept - 1);
}

std::string tickLabel(ValueScale scale, double value) {
  if (value == 0 && scale == ValueScale::memory) return "0";
  // A quarter of 10 KB/s has a half that rates leave out.
  if (scale == ValueScale::rate) {
    auto text = Format::bytes(value);
    return withoutIdleZeros(text) + "/s";
  }
  return withoutIdleZeros(chartValue(scale, value));
}

ValueAxis memoryAxis(double total) {
  if (total <= 0) return {gigabyte, {{0, "0"}}};
  double step = gigabyte;
  while (total / step > 4) step *= 2;
  ValueAxis axis{total, {}};
  for (double value = 0; value < total * (1 - tooNearTotal); value += step)
    axis.ticks.push_back({value, tickLabel(ValueScale::memory, value)});
  axis.ticks.push_back({total, chartValue(ValueScale::memory, total), true});
  return axis;
}

std::string month(int number) {
  static constexpr const char* names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  return localized(names[number - 1]);
}

std::string dayLabel(TimeAxis time, const LocalTime& local) {
  return time == TimeAxis::days30 ? dayAndMonth(local) : weekdayAndDay(local);
}

bool spansDays(TimeAxis time) { return time == TimeAxis::days7 || time == TimeAxis::days30; }

std::vector<TimeTick> minuteTicks(Date begin, Date end) {
  std::vector<TimeTick> ticks;
  const int minutes = int((end - begin).count() / 60 + 0.5);
  for (int ago = minutes; ago > 0; --ago)
    ticks.push_back({end - Seconds{ago * 60.0}, localized("−{n} min", {{"n", std::to_string(ago)}}),
                     ago == minutes ? TimeTick::Place::first : TimeTick::Place::middle});
  return ticks;
}

std::vector<TimeTick> hourTicks(int step, Date begin, Date end, const TimeZone& zone) {
  std::vector<TimeTick> ticks;
  for (auto day = localDay(zone, begin); day <= localDay(zone, end); day = day + 1)
    for (int hour = 0; hour < 24; hour += step) {
      const Date at = timeOfDay(zone, day, hour);
      if (at >= begin && at < end) ticks.push_back({at, clockText(zone, at)});
    }
  return ticks;
}

std::vector<TimeTick> dayTicks(TimeAxis time, Date begin, Date end, const TimeZone& zone) {
  constexpr int monday = 1;
  std::vector<TimeTick> ticks;
  for (auto day = localDay(zone, begin); day <= localDay(zone, end); day = day + 1) {
    const Date at = startOfDay(zone, day);
    const auto local = localTime(zone, at);
    if (at < begin || at >= end || (time == TimeAxis::days30 && local.weekday != monday)) continue;
    ticks.push_back({at, dayLabel(time, local)});
  }
  return ticks;
}

std::string whenText(const ChartData& data, Date bucket, const TimeZone& zone) {
  if (data.bucket > Seconds{0}) return spanText(data.time, bucket, bucket + data.bucket, zone);
  return clockTextWithSeconds(zone, bucket);
}

const ChartBucket* bucketAt(const ChartLine& line, Date date) {
  const auto found = std::lower_bound(line.buckets.begin(), line.buckets.end(), date,
                                      [](const ChartBucket& bucket, Date at) { return bucket.date < at; });
  return found != line.buckets.end() && found->date == date ? &*found : nullptr;
}

} // namespace

std::string shortWeekday(int number) {
  static constexpr const char* names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  return localized(names[number]);
}

std::string weekdayAndDay(const LocalTime& time) {
  return localized("{weekday} {day}",
                   {{"weekday", shortWeekday(time.weekday)}, {"day", std::to_string(time.day)}});
}

std::string dayAndMonth(const LocalTime& time) {
  return localized("{day} {month}", {{"day", std::to_string(time.day)}, {"month", month(time.month)}});
}

std::string chartValue(ValueScale scale, double value) { return Format::figure(unitOf(scale), value); }

std::string chartSpread(ValueScale scale, double least, double most) {
  auto from = chartValue(scale, least);
  const auto to = chartValue(scale, most);
  if (from == to) return {};
  if (from.substr(numberEnd(from)) == to.substr(numberEnd(to))) from.resize(numberEnd(from));
  return from + " – " + to;
}

ValueAxis valueAxis(ValueScale scale, double top, double total) {
  if (scale == ValueScale::memory) return memoryAxis(total);
  if (scale == ValueScale::percent) top = 100;
  const double leading = top / std::pow(10, std::floor(std::log10(top) + 1e-9));
  const int parts = std::lround(leading) == 5 ? 5 : 4;
  ValueAxis axis{top, {}};
  for (int part = 0; part <= parts; ++part) {
    const double value = top * part / parts;
    axis.ticks.push_back({value, part == 0 && scale == ValueScale::rate ? "0" : tickLabel(scale, value)});
  }
  return axis;
}

double roundTop(ValueScale scale, double maximum) {
  if (scale == ValueScale::percent) return 100;
  const double wanted = std::max(maximum, scale == ValueScale::watts ? 5.0 : 1000.0);
  const double decade = std::pow(10, std::floor(std::log10(wanted)));
  for (const double step : {1.0, 2.0, 5.0})
    if (wanted <= step * decade * (1 + 1e-9)) return step * decade;
  return 10 * decade;
}

double ShrinkingTop::update(ValueScale scale, double maximum, Date now) {
  const double wanted = roundTop(scale, maximum);
  if (wanted >= top_ || maximum >= top_ / 2) {
    lowSince_.reset();
    top_ = std::max(top_, wanted);
    return top_;
  }
  if (!lowSince_ || now < *lowSince_) lowSince_ = now;
  if (now - *lowSince_ >= patience) {
    top_ = wanted;
    lowSince_.reset();
  }
  return top_;
}

std::vector<TimeTick> timeTicks(TimeAxis time, Date begin, Date end, const TimeZone& zone) {
  auto ticks = time == TimeAxis::live      ? minuteTicks(begin, end)
               : time == TimeAxis::hours12 ? hourTicks(2, begin, end, zone)
               : time == TimeAxis::hours24 ? hourTicks(4, begin, end, zone)
                                           : dayTicks(time, begin, end, zone);
  ticks.push_back({end, localized("now"), TimeTick::Place::last});
  return ticks;
}

bool isBroken(const ChartData& data, Date before, Date after) {
  // A bucket reaches to its end, an instant of the live axis to the next one.
  return after - before > (data.time == TimeAxis::live ? liveGap : data.bucket * 1.5);
}

std::vector<ChartGap> gaps(const ChartData& data) {
  std::vector<ChartGap> found;
  const auto dates = stops(data);
  if (dates.empty()) return found;
  const bool isLive = data.time == TimeAxis::live;
  const auto add = [&](Date begin, Date end) { found.push_back({begin, end}); };
  if (!isLive && isBroken(data, data.begin, dates.front())) add(data.begin, dates.front());
  for (std::size_t i = 1; i < dates.size(); ++i)
    if (isBroken(data, dates[i - 1], dates[i])) add(dates[i - 1] + data.bucket, dates[i]);
  const Date recorded = dates.back() + data.bucket;
  if (data.end - recorded > (isLive ? liveGap : unwritten + data.bucket)) add(recorded, data.end);
  return found;
}

std::string momentText(TimeAxis time, Date moment, const TimeZone& zone) {
  const auto clock = clockText(zone, moment);
  return spansDays(time) ? dayLabel(time, localTime(zone, moment)) + ", " + clock : clock;
}

std::string spanText(TimeAxis time, Date begin, Date end, const TimeZone& zone) {
  const bool isSameDay = localTime(zone, begin).day == localTime(zone, end).day;
  return momentText(time, begin, zone) + " – " +
         (isSameDay ? clockText(zone, end) : momentText(time, end, zone));
}

std::vector<ChartBucket> mergedByColumn(const std::vector<ChartBucket>& buckets, Date begin, Date end,
                                        std::size_t columns) {
  std::vector<ChartBucket> merged;
  const double width = (end - begin).count() / double(std::max<std::size_t>(columns, 1));
  double column = 0;
  int count = 0;
  for (const auto& bucket : buckets) {
    const double own = std::floor((bucket.date - begin).count() / width);
    if (count == 0 || own != column) {
      if (count > 0) merged.back().mean /= count;
      column = own;
      count = 1;
      merged.push_back(bucket);
      continue;
    }
    auto& into = merged.back();
    into.least = std::min(into.least, bucket.least);
    into.mean += bucket.mean;
    into.most = std::max(into.most, bucket.most);
    ++count;
  }
  if (count > 0) merged.back().mean /= count;
  return merged;
}

Readout readout(const ChartData& data, Date bucket, const TimeZone& zone) {
  Readout result{whenText(data, bucket, zone), {}};
  for (const auto& line : data.lines)
    if (const auto* at = bucketAt(line, bucket))
      result.parts.push_back({data.lines.size() > 1 ? line.name : "", line.token,
                              chartValue(data.scale, at->mean),
                              chartSpread(data.scale, at->least, at->most)});
  return result;
}

std::string sentence(const Readout& readout) {
  std::string words = readout.when;
  if (readout.parts.empty()) words += ", " + localized("Not recorded");
  for (const auto& part : readout.parts) {
    words += ", " + (part.name.empty() ? "" : part.name + " ") + part.value;
    if (!part.spread.empty()) words += ", " + part.spread;
  }
  return words;
}

std::vector<Date> stops(const ChartData& data) {
  std::vector<Date> dates;
  for (const auto& line : data.lines)
    for (const auto& bucket : line.buckets) dates.push_back(bucket.date);
  if (data.lines.size() > 1) {
    std::sort(dates.begin(), dates.end());
    dates.erase(std::unique(dates.begin(), dates.end()), dates.end());
  }
  return dates;
}

std::optional<std::size_t> nearestStop(const ChartData& data, const std::vector<Date>& stops, Date at) {
  if (stops.empty()) return std::nullopt;
  const Date wanted = at - data.bucket / 2;
  const auto after = std::lower_bound(stops.begin(), stops.end(), wanted);
  if (after == stops.end()) return stops.size() - 1;
  const auto index = std::size_t(after - stops.begin());
  if (index > 0 && wanted - stops[index - 1] < stops[index] - wanted) return index - 1;
  return index;
}

std::optional<Date> stopAt(const ChartData& data, std::optional<Date> moment) {
  if (!moment) return std::nullopt;
  const auto all = stops(data);
  const auto stop = nearestStop(data, all, *moment);
  return stop ? std::optional(all[*stop]) : std::nullopt;
}

std::optional<ChartSummary> summaryOf(const ChartLine& line) {
  if (line.buckets.empty()) return std::nullopt;
  ChartSummary summary;
  for (const auto& bucket : line.buckets) {
    summary.mean += bucket.mean;
    summary.most = std::max(summary.most, bucket.most);
  }
  summary.mean /= double(line.buckets.size());
  return summary;
}

} // namespace korvell
