#pragma once
// What the history takes in and gives out, and the ranges that people look at.

#include "Base/DatabaseFile.h"
#include "Base/Date.h"
#include "Base/Enum.h"
#include "Base/Record.h"
#include "Core/Machine/Models.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

enum class HistoryRange { live, h12, h24, d7, d30 };

template <>
struct EnumTable<HistoryRange> {
  using enum HistoryRange;
  static constexpr EnumCase<HistoryRange> cases[] = {{live, "Live", "Live"},
                                                     {h12, "12h", "12h"},
                                                     {h24, "24h", "24h"},
                                                     {d7, "7d", "7d"},
                                                     {d30, "30d", "30d"}};
};

/// How far a range reaches back, and how much time one point of its series stands for.
struct HistorySpan {
  HistoryRange range;
  int seconds;
  int bucket; ///< seconds
};

inline constexpr HistorySpan historySpans[] = {{HistoryRange::live, 300, 2},
                                               {HistoryRange::h12, 43'200, 180},
                                               {HistoryRange::h24, 86'400, 300},
                                               {HistoryRange::d7, 604'800, 1'800},
                                               {HistoryRange::d30, 2'592'000, 10'800}};

constexpr HistorySpan spanOf(HistoryRange range) { return historySpans[std::size_t(range)]; }

/// The minutes that begin from `since` to `until`, Unix time in whole seconds. What is asked never reaches
/// beyond now: a clock that was ahead leaves minutes in the future, which wait there for their time.
struct HistoryPeriod {
  std::int64_t since = 0;
  std::int64_t until = 0;
};

/// Over the minutes of a range, or the points of a series.
struct SeriesSummary {
  double minimum = 0;
  double mean = 0;
  double maximum = 0;

  bool operator==(const SeriesSummary&) const = default;
};

/// One stretch of a chart: what its recorded minutes come to.
struct ChartPoint {
  Date date; ///< when the stretch begins
  double minimum = 0;
  double mean = 0;
  double maximum = 0;

  bool operator==(const ChartPoint&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &ChartPoint::date}, Field{"minimum", &ChartPoint::minimum},
                      Field{"mean", &ChartPoint::mean}, Field{"maximum", &ChartPoint::maximum}};
  }
};

/// A metric over a range, condensed to what a chart can show. A stretch without a recorded minute has no
/// point: that is a gap.
struct ChartSeries {
  Date begin, end;
  Seconds stretch{60}; ///< how long a point stands for: whole minutes
  std::vector<ChartPoint> points;

  bool operator==(const ChartSeries&) const = default;
};

/// An application's mean over all recorded minutes of a range; minutes in which it was not kept count as 0.
struct AppTotal {
  std::string name;
  std::optional<std::string> bundlePath;
  double value = 0;

  bool operator==(const AppTotal&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &AppTotal::name}, Field{"bundlePath", &AppTotal::bundlePath},
                      Field{"value", &AppTotal::value}};
  }
};

/// The value columns of both tables, in their order.
enum HistoryColumn : std::size_t {
  cpuColumn,
  memoryColumn,
  diskColumn,
  networkColumn,
  gpuColumn, ///< always 0 for an application: no system attributes the graphics processor's time
  energyColumn,
  diskWriteColumn,
  historyColumnCount
};
using HistoryValues = std::array<double, historyColumnCount>;

/// What the columns are called, and the metrics whose units their values have.
inline constexpr struct {
  HistoryColumn column;
  const char* name;
  Metric metric;
} historyColumns[] = {{cpuColumn, "cpu", Metric::cpu},
                      {memoryColumn, "memory", Metric::memory},
                      {diskColumn, "disk", Metric::disk},
                      {networkColumn, "network", Metric::network},
                      {gpuColumn, "gpu", Metric::gpu},
                      {energyColumn, "energy", Metric::energy},
                      {diskWriteColumn, "diskWrite", Metric::disk}};
static_assert(std::size(historyColumns) == historyColumnCount);

/// One application's values: of one sample, their sums, or the means over a minute.
struct HistoryApp {
  std::string id; ///< AppUsage::id
  std::string name;
  std::optional<std::string> path;
  HistoryValues values{};

  bool operator==(const HistoryApp&) const = default;
};

/// Why nothing is recorded at the moment.
struct HistoryProblem {
  DatabaseFault kind = DatabaseFault::failing;
  std::string detail; ///< a sentence with the file's path, localised

  bool operator==(const HistoryProblem&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"kind", &HistoryProblem::kind}, Field{"detail", &HistoryProblem::detail}};
  }
};

/// What the history keeps of a snapshot.
struct HistorySample {
  Date date;
  std::optional<int> score;
  HistoryValues system{};
  std::vector<HistoryApp> apps;
};

/// One stored minute: means over its samples.
struct HistoryMinute {
  std::int64_t ts = 0; ///< Unix time of the minute's start, a multiple of 60
  HistoryValues system{};
  std::optional<double> score; ///< absent when no sample carried one
  std::vector<HistoryApp> apps;

  bool operator==(const HistoryMinute&) const = default;
};

} // namespace korvell
