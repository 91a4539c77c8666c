#pragma once
// How the machine is doing, at one moment.

#include "Core/Health/HealthReport.h"
#include "Core/History/HistoryTypes.h"
#include "Core/Machine/Models.h"
#include "Core/Machine/PrivilegedUse.h"
#include "Platform/KnownParts.h"

#include <optional>

namespace korvell {

struct Measurement {
  SystemSnapshot snapshot;
  KnownParts known; ///< which of its figures were read
  HealthReport report;
  std::optional<PrivilegedUse> privileged;      ///< what the helper told, and what stayed hidden
  std::optional<HistoryProblem> historyProblem; ///< why the keeper records nothing; absent while it does
  bool fromKeeper = false;
  bool keeperIsRunning = false; ///< where it told nothing, that was said
};

} // namespace korvell
