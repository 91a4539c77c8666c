#include "Core/Machine/Quit.h"

#include "Core/Machine/ProcessSampler.h"

namespace korvell {

StartTimes startTimes(const AppUsage& app, const ProcessSampler& sampler) {
  StartTimes starts;
  for (const auto& process : app.processes)
    if (const auto* identity = sampler.identity(process.pid); identity && identity->name() == process.name)
      starts[process.pid] = identity->start;
  return starts;
}

std::vector<QuitTarget> quitTargets(const AppUsage& app, const StartTimes& starts, bool force,
                                    ProcessID self) {
  std::vector<QuitTarget> targets;
  for (const auto& process : app.processes) {
    if (process.pid == self || (!force && app.mainPID && process.pid != *app.mainPID)) continue;
    if (const auto start = starts.find(process.pid); start != starts.end())
      targets.push_back({process.pid, start->second});
  }
  return targets;
}

bool isSystemGroup(const AppUsage& app) {
  return !app.bundlePath && (app.id == macOSSystemGroup.key || app.id == linuxSystemGroup.key);
}

QuitResult quitProcesses(const std::vector<QuitTarget>& targets, bool force, QuitServices services) {
  QuitResult result;
  const auto signal = force ? ProcessSignal::kill : ProcessSignal::terminate;
  const auto end = [&](const QuitTarget& target) {
    if (services.table.start(target.pid) != target.start) return SignalOutcome::gone;
    return services.applications.quit(target.pid, force)
               ? SignalOutcome::sent
               : services.control.send(target.pid, target.start, signal);
  };
  for (const auto& target : targets) {
    switch (end(target)) {
    case SignalOutcome::sent:
      ++result.sent;
      break;
    case SignalOutcome::gone:
      ++result.gone;
      break;
    case SignalOutcome::denied:
      ++result.denied;
      break;
    }
  }
  return result;
}

} // namespace korvell
