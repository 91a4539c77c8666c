#pragma once
// A measurement for a command that runs once.

#include "Core/Health/HealthReport.h"
#include "Core/Loop/Tick.h"
#include "Tool/Command.h"

namespace korvell {

/// Two cycles of the sampling loop a second apart: the second one has rates. Takes that second.
Tick measure(Context& context);

/// How the machine is doing.
struct Measurement {
  SystemSnapshot snapshot;
  KnownParts known; ///< which of its figures were read
  HealthReport report;
  std::optional<PrivilegedUse> privileged;      ///< what the helper told, and what stayed hidden
  std::optional<HistoryProblem> historyProblem; ///< why the keeper records nothing; absent while it does
  bool fromKeeper = false;
  bool keeperIsRunning = false; ///< where it told nothing, that was said
};

/// The keeper's last measurement; without a keeper one of our own, whose report knows no ten minutes.
Measurement currentMeasurement(Context& context);

} // namespace korvell
