#pragma once
// How the machine is doing, at one moment: as the keeper measured it last, or as this process does.

#include "App/KeeperAnswer.h"
#include "Core/Health/HealthReport.h"
#include "Core/History/HistoryTypes.h"
#include "Core/Loop/Tick.h"
#include "Core/Machine/Models.h"
#include "Core/Machine/PrivilegedUse.h"
#include "Platform/Host.h"
#include "Platform/KnownParts.h"
#include "Sensors/SensorsSnapshot.h"

#include <initializer_list>
#include <optional>

namespace korvell {

struct Measurement {
  SystemSnapshot snapshot;
  KnownParts known; ///< which of its figures were read
  HealthReport report;
  std::optional<SensorsSnapshot> sensors;       ///< of the last cycle that read them
  std::optional<PrivilegedUse> privileged;      ///< what the helper told, and what stayed hidden
  std::optional<HistoryProblem> historyProblem; ///< why the keeper records nothing; absent while it does
  bool fromKeeper = false;
  bool keeperIsRunning = false; ///< where it told nothing, that was said
};

/// What a keeper's answer with the parts of measurementParts tells; nothing when it tells no measurement.
std::optional<Measurement> measurementOf(const KeeperAnswer& state);
inline constexpr std::initializer_list<const char*> measurementParts = {
    "snapshot", "known", "report", "sensors", "privileged", "historyProblem"};
/// Also of one that has not measured yet.
std::optional<HistoryProblem> historyProblemOf(const KeeperAnswer& state);
/// Two cycles of the sampling loop a second apart: the second one has rates. Takes that second, off the main
/// queue or in a command that has nothing else to do.
Tick measureTwice(Host& host, const Clock& clock);
/// A tick of measureTwice() as a measurement: its report knows no ten minutes.
Measurement ownMeasurement(Tick tick, const Host& host, const Clock& clock);

} // namespace korvell
