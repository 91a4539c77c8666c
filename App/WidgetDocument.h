#pragma once
// What the widget's document says of a report, a measurement and the history. Pure, but for the history's
// answers.

#include "Core/Health/HealthReport.h"
#include "Core/History/HistoryStore.h"
#include "Core/Machine/Models.h"
#include "Shared/WidgetSnapshot.h"

#include <string_view>
#include <vector>

namespace korvell {

/// The first three findings, in their order.
std::vector<WidgetSnapshot::Fix> widgetFixes(const HealthReport& report);
/// The three heaviest by memory, without the group of that name.
std::vector<WidgetSnapshot::TopApp> widgetApps(const std::vector<AppUsage>& apps,
                                               std::string_view systemGroup);
/// CPU, memory, disk and network with their last half hour. Waits for the history: not for the main thread.
std::vector<WidgetSnapshot::Tile> widgetTiles(const SystemSnapshot& snapshot, HistoryStore& history);
/// The tiles' figures alone.
std::vector<WidgetSnapshot::Tile> widgetTiles(const SystemSnapshot& snapshot);
/// Differs when what the widget shows at a glance has changed: "87|Good|Disk space is getting low|…".
std::string widgetContentKey(const HealthReport& report);

} // namespace korvell
