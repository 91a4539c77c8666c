#pragma once
// Ending an application or a process on the user's word.

#include "Core/Machine/Models.h"
#include "Core/Machine/Owners.h"
#include "Platform/ProcessTable.h"

#include <cstdint>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace korvell {

/// A process with the start time that it had when the user saw it.
struct QuitTarget {
  ProcessID pid = 0;
  std::uint64_t start = 0; ///< in the process table's ticks
  bool operator==(const QuitTarget&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"pid", &QuitTarget::pid}, Field{"start", &QuitTarget::start}};
  }
};

using StartTimes = std::unordered_map<ProcessID, std::uint64_t>;

class ProcessSampler;
/// Of the application's processes, as the sampler's last cycle found them; without those whose id belongs to
/// one of another name by now.
StartTimes startTimes(const AppUsage& app, const ProcessSampler& sampler);

/// Who gets the signal. Politely: the process that stands for the application, which ends its others itself,
/// or each one where there is none. With `force`: every process. Never `self`, and nobody whose start time
/// is unknown.
std::vector<QuitTarget> quitTargets(const AppUsage& app, const StartTimes& starts, bool force,
                                    ProcessID self);

/// The system's own group is not to be quit, under any system's key.
bool isSystemGroup(const AppUsage& app);

struct QuitResult {
  int sent = 0;
  int gone = 0;
  int denied = 0;
  bool operator==(const QuitResult&) const = default;
};

/// The ways to end a process.
struct QuitServices {
  ProcessTable& table;
  RunningApplications& applications;
  ProcessControl& control;
};

/// Asks the system to quit the application where it keeps track of applications, and sends signals where it
/// does not: in both cases only while the process still is the one that the user saw.
QuitResult quitProcesses(const std::vector<QuitTarget>& targets, bool force, QuitServices services);

} // namespace korvell
