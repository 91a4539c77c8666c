#pragma once
// What of a chart can be decided without painting: ticks and their words, gaps, what falls into one column of
// pixels, the readout.

#include "Base/LocalTime.h"
#include "UI/Kit/ChartData.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// "Sun" for 0.
std::string shortWeekday(int number);
/// "Fri 13"
std::string weekdayAndDay(const LocalTime& time);
/// "16 Nov"
std::string dayAndMonth(const LocalTime& time);

/// A value as it is read, with its unit.
std::string chartValue(ValueScale scale, double value);
/// From the least to the most: "71 – 99%", the unit once where it is the same.
std::string chartSpread(ValueScale scale, double least, double most);

struct ValueTick {
  double value = 0;
  std::string label;
  bool isTotal = false; ///< all there is: a dashed line

  bool operator==(const ValueTick&) const = default;
};
struct ValueAxis {
  double top = 100;
  std::vector<ValueTick> ticks; ///< ascending, from 0

  bool operator==(const ValueAxis&) const = default;
};
/// Percentages reach to 100, memory to the total, rates and watts to `top`.
ValueAxis valueAxis(ValueScale scale, double top, double total);
/// The smallest 1, 2 or 5 times a power of ten that is not below the maximum; watts reach to 5 at least,
/// rates to 1 KB/s.
double roundTop(ValueScale scale, double maximum);

/// The top of a live chart: grows at once, and shrinks when the maximum stayed under half of it for a while.
class ShrinkingTop {
public:
  static constexpr Seconds patience{30};
  double update(ValueScale scale, double maximum, Date now);

private:
  double top_ = 0;
  std::optional<Date> lowSince_;
};

struct TimeTick {
  enum class Place { middle, first, last }; ///< how its label stands to the tick
  Date date;
  std::string label;
  Place place = Place::middle;

  bool operator==(const TimeTick&) const = default;
};
/// Ascending, the last one "now".
std::vector<TimeTick> timeTicks(TimeAxis time, Date begin, Date end, const TimeZone& zone);

/// Whether too much time lies between two neighbouring buckets for a line to join them.
bool isBroken(const ChartData& data, Date before, Date after);

struct ChartGap {
  Date begin, end;
  bool operator==(const ChartGap&) const = default;
};
/// Where nothing was recorded. On a live axis, which fills from the right, what lies before the first
/// measurement is none.
std::vector<ChartGap> gaps(const ChartData& data);
/// "23:48", with the day where a chart spans several.
std::string momentText(TimeAxis time, Date moment, const TimeZone& zone);
/// "23:48 – 07:36", with the days where a chart spans several.
std::string spanText(TimeAxis time, Date begin, Date end, const TimeZone& zone);

/// What falls into the same of `columns` equal parts of the time from `begin` to `end` becomes one: the mean
/// of the means, the least of the least, the most of the most. Peaks survive.
std::vector<ChartBucket> mergedByColumn(const std::vector<ChartBucket>& buckets, Date begin, Date end,
                                        std::size_t columns);

/// What stands beside the crosshair.
struct Readout {
  struct Part {
    std::string name; ///< of the line; empty with one line
    Token token = Token::cpu;
    std::string value;
    std::string spread; ///< empty where the least is the most
    bool operator==(const Part&) const = default;
  };
  std::string when;
  std::vector<Part> parts; ///< empty: nothing was recorded then

  bool operator==(const Readout&) const = default;
};
Readout readout(const ChartData& data, Date bucket, const TimeZone& zone);
/// In words: "14:10 – 14:15, 93%, 71 – 99%".
std::string sentence(const Readout& readout);

/// The beginnings of all buckets of all lines, ascending: where a crosshair can stand.
std::vector<Date> stops(const ChartData& data);
/// The one whose middle is nearest, which is the one that the moment lies in where there is one; nothing
/// without any.
std::optional<std::size_t> nearestStop(const ChartData& data, const std::vector<Date>& stops, Date at);
/// The same of all stops of the data; nothing for nothing.
std::optional<Date> stopAt(const ChartData& data, std::optional<Date> moment);

struct ChartSummary {
  double mean = 0;
  double most = 0;
  bool operator==(const ChartSummary&) const = default;
};
/// Of all its buckets; nothing without any.
std::optional<ChartSummary> summaryOf(const ChartLine& line);

} // namespace korvell
