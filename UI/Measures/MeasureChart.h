#pragma once
// A measure over time as a chart shows it, made of the model's live series or of what the history answered.

#include "App/HistoryQueries.h"
#include "App/Model.h"
#include "Base/LocalTime.h"
#include "Core/Storage/StorageLog.h"
#include "UI/Kit/ChartData.h"
#include "UI/Measures/LiveDirections.h"

#include <vector>

namespace korvell {

ChartData liveChart(const Model& model, const LiveDirections& directions, Metric metric,
                    const std::vector<FreedEntry>& cleanUps);

/// `now` bounds nothing: the range was asked a moment ago.
ChartData rangeChart(const Model& model, Metric metric, const RangeHistory& history,
                     const std::vector<FreedEntry>& cleanUps, const TimeZone& zone);

/// Of the live series; nothing while it is empty.
std::optional<SeriesSummary> liveSummary(const Model& model, Metric metric);
/// What was recorded; nothing where that is the 0 of what no part of this machine tells.
std::optional<SeriesSummary> recordedSummary(const Model& model, Metric metric, const RangeHistory& history);

/// What a measure's chart shows.
KnownPart partOf(Metric metric);
/// Whether there is such a figure on this machine at the moment.
bool isMeasured(const Model& model, Metric metric);

} // namespace korvell
