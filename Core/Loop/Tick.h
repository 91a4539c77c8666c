#pragma once
// The result of one sampling cycle. An absent optional means that nothing was read in this cycle: whoever
// receives the tick keeps the previous value.

#include "Core/DevServers/DevServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/History/HistoryTypes.h"
#include "Core/Machine/Models.h"
#include "Core/Machine/PrivilegedUse.h"
#include "Core/Startup/StartupItem.h"
#include "Platform/KnownParts.h"
#include "Sensors/SensorsSnapshot.h"

#include <optional>
#include <vector>

namespace korvell {

struct Tick {
  SystemSnapshot snapshot;
  std::optional<SensorsSnapshot> sensors;
  std::optional<std::vector<PeripheralBattery>> peripherals;
  std::optional<std::vector<DevProject>> projects;
  std::vector<HealthAlert> alerts; ///< those that fired in this cycle
  std::optional<std::vector<StartupItem>> startupItems;
  std::optional<Totals> totals;
  std::optional<PrivilegedUse> privileged;      ///< of the processes; absent when they were not read
  double cpuTenMinuteAverage = 0;               ///< percent, as the history reports it
  std::optional<HistoryProblem> historyProblem; ///< why nothing is recorded; absent while it is
  KnownParts known; ///< which of the snapshot's figures were read, and the average

  bool operator==(const Tick&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"snapshot", &Tick::snapshot},
                      Field{"sensors", &Tick::sensors},
                      Field{"peripherals", &Tick::peripherals},
                      Field{"projects", &Tick::projects},
                      Field{"alerts", &Tick::alerts},
                      Field{"startupItems", &Tick::startupItems},
                      Field{"totals", &Tick::totals},
                      Field{"privileged", &Tick::privileged},
                      Field{"cpuTenMinuteAverage", &Tick::cpuTenMinuteAverage, Unit::percent},
                      Field{"historyProblem", &Tick::historyProblem},
                      Field{"known", &Tick::known}};
  }
};

} // namespace korvell
