#pragma once
// Everything that is told as metrics, at one moment: as a keeper tells it to others, as it knows it itself,
// or as one measurement finds it. What is absent is not told.

#include "App/AppModel.h"
#include "App/Measurement.h"
#include "Core/AIUsage/UsageSummary.h"
#include "Core/DevServers/DevServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Storage/StorageFound.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct MetricsReading {
  Date now;
  SystemSnapshot snapshot;
  KnownParts known;
  HealthReport report;
  std::optional<PrivilegedUse> privileged;
  std::optional<SensorsSnapshot> sensors = {};
  std::optional<std::vector<PeripheralBattery>> peripherals = {};
  std::optional<std::vector<DevProject>> projects; ///< a keeper's: nobody else knows which are idle
  std::optional<std::vector<HealthAlert>> alerts;  ///< the newest first
  std::optional<std::vector<AIUsageRow>> aiUsage;  ///< of thirty days; `day` is a local midnight
  std::optional<Date> today;                       ///< its local midnight
  std::optional<bool> isRecording;                 ///< the history; a keeper's
  std::int64_t freed = 0;                          ///< bytes, in all clean-ups
  StorageFound::ByKind reclaimable;                ///< by the last scan of each kind
  std::optional<ProcessID> keeper;
};

/// Adds what is kept in the user's settings.
void addKept(MetricsReading& reading, const UserDefaults& defaults);
/// Of a keeper's answer; nothing when it does not tell a measurement.
std::optional<MetricsReading> metricsReading(const Value& state, const TimeZone& zone, Date now);
/// Of the process that keeps.
MetricsReading metricsReading(const AppModel& model, Date now);

} // namespace korvell
