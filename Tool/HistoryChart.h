#pragma once
// A series drawn with block characters: an axis of values, columns of time, gaps where nothing was recorded.

#include "Base/LocalTime.h"
#include "Core/History/HistoryTypes.h"
#include "Tool/Terminal.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// Of the points, each weighing the same; nothing for an empty series.
std::optional<SeriesSummary> summaryOf(const std::vector<HistoryPoint>& points);

/// What a chart shows: values between `begin` and `end`, each standing for `cover` from its date on.
struct ChartSpan {
  Date begin;
  Date end;
  Seconds cover;
};

/// One value a column, the mean of what lies in its time; nothing where no point covers any of it.
std::vector<std::optional<double>> chartColumns(const std::vector<HistoryPoint>& points,
                                                const ChartSpan& span, int columns);

/// Columns as bars from the bottom of `rows` lines, the top one first. Fractions of the whole height; nothing
/// where there is none, and a mark at the bottom for 0.
std::vector<std::string> chartBars(const std::vector<std::optional<double>>& fractions, int rows);

/// The chart with its axes, scaled to its points, and the summary's line of minimum, mean and maximum; every
/// line at most `width` columns. `points` is not empty.
std::vector<std::string> chartLines(const Terminal& terminal, Metric metric,
                                    const std::vector<HistoryPoint>& points, const SeriesSummary& summary,
                                    const ChartSpan& span, const TimeZone& zone, int width);

} // namespace korvell
