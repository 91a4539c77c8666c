#pragma once
// What the commands print as JSON, where the keeper and programs that talk to agents find it too;
// docs/json.md describes it to others. Of AI usage and storage it is made beside the records (summaryValue,
// toValue), of actions in ActionTexts.h.

#include "App/Measurement.h"
#include "Base/Value.h"
#include "Core/AIUsage/UsageSummary.h"
#include "Core/DevServers/DevServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/WeeklyReport.h"
#include "Core/Machine/ProcessSampler.h"
#include "Core/Machine/UsageOrder.h"
#include "Core/Startup/StartupItem.h"
#include "Platform/Diagnostics.h"
#include "Platform/Notifications.h"
#include "Platform/UsageHelper.h"
#include "Platform/UserDefaults.h"
#include "Shared/WidgetSnapshot.h"

#include <optional>
#include <vector>

namespace korvell {

/// `sources` tell why figures are not known.
Value statusValue(const Measurement& status, const std::vector<SourceReport>& sources);
/// `apps` as they are to be listed; the processes where those are listed too.
Value topValue(UsageKey by, const std::vector<AppUsage>& apps,
               const std::optional<std::vector<ProcessUsage>>& processes, const Measurement& measured);
/// Why a process counts to its application.
Value ownerValue(ProcessID pid, const ProcessSampler::Identity& process);

Value seriesValue(Metric metric, HistoryRange range, const std::vector<HistoryPoint>& points,
                  const std::optional<SeriesSummary>& summary);
Value topAppsValue(Metric metric, HistoryRange range, const std::vector<AppTotal>& apps);
/// `asked` is told where nothing was recorded.
Value minuteValue(const std::optional<HistoryMinute>& minute, Date asked);

/// `isIdleKnown`: a keeper has followed them.
Value serversValue(const std::vector<DevProject>& projects, bool isIdleKnown);
Value sensorsValue(const SensorsSnapshot& sensors, const std::vector<PeripheralBattery>& peripherals);
Value startupItemsValue(const std::vector<StartupItem>& items);
/// `unseen`: how many of them the user has not seen.
Value alertsValue(const std::vector<HealthAlert>& alerts, std::size_t unseen);
Value alertKindsValue(const UserDefaults& defaults);
/// `report`: as it would read now; absent without a score in the past seven days.
Value weeklyReportValue(bool isEnabled, const std::optional<Notification>& report = std::nullopt);
/// The one that was sent last; without a member where none was.
Value lastReportValue(const std::optional<SentReport>& report);
Value planLimitsValue(const AIUsageSummary& usage);
Value storageLogValue(const UserDefaults& defaults);
/// `placed`: how many widgets there are; absent where that could not be found out.
Value widgetValue(const std::string& path, const std::optional<WidgetSnapshot>& document,
                  std::optional<std::size_t> placed);
Value helperValue(UsageHelperStatus status, bool isOffered);
/// `cycleMicroseconds` and `residentBytes`: what Korvell itself costs.
Value doctorValue(const std::vector<SourceReport>& sources, double cycleMicroseconds,
                  std::uint64_t residentBytes);

} // namespace korvell
