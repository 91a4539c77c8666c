#include "Agents/Readings.h"

#include "Base/Localization.h"
#include "Core/Machine/Quit.h"

#include <unistd.h>

namespace korvell {

namespace {

/// A measurement serves the calls that come right after it.
constexpr Seconds fresh{2};
/// How exactly the start of a process is known.
constexpr Seconds startPrecision{0.1};

} // namespace

KeeperAnswer Readings::ask(std::initializer_list<const char*> parts) const {
  return measuredState(services_.host.folders, services_.patience, parts);
}

const Tick& Readings::ownTick() {
  const auto now = services_.clock.monotonic();
  if (!tick_ || now - measuredAt_ > fresh) {
    tick_ = services_.measure();
    measuredAt_ = services_.clock.monotonic();
  }
  return *tick_;
}

std::unique_ptr<HistoryStore> Readings::history() const {
  return std::make_unique<HistoryStore>(services_.makeQueue, services_.clock, services_.host.folders.data,
                                        HistoryAccess::reader);
}

// Handles

std::optional<std::uint64_t> Readings::startOf(ProcessID pid, Date seen) {
  auto& table = *services_.host.processes;
  const auto date = table.startDate(pid);
  if (!date || *date > seen + startPrecision) return std::nullopt;
  return table.start(pid);
}

std::optional<std::string> Readings::handleOf(const AppUsage& app, Date seen) {
  if (isSystemGroup(app)) return std::nullopt;
  StartTimes starts;
  for (const auto& process : app.processes)
    if (const auto start = startOf(process.pid, seen)) starts.emplace(process.pid, *start);
  const auto request = [&](bool force) {
    return QuitRequest{
        .processes = quitTargets(app, starts, force, getpid()), .force = force, .name = app.name};
  };
  auto politely = request(false), forced = request(true);
  if (politely.processes.empty()) return std::nullopt;
  return services_.handles.give({std::move(politely), std::move(forced)});
}

std::optional<std::string> Readings::handleOf(const ProcessUsage& process, Date seen) {
  const auto start = process.pid == getpid() ? std::nullopt : startOf(process.pid, seen);
  if (!start) return std::nullopt;
  QuitRequest request{.processes = {{process.pid, *start}}}, forced = request;
  forced.force = true;
  return services_.handles.give({std::move(request), std::move(forced)});
}

std::string Readings::handleOf(const DevServer& server) {
  return services_.handles.give({StopServerRequest{server.pid, server.startedAt}});
}

// One call

Reading::Reading(Readings& readings, std::initializer_list<const char*> parts)
    : readings_(readings), state_(readings.ask(parts)) {}

template <class T>
std::optional<T> Reading::told(const char* name) const {
  const auto* value = part(name);
  T read;
  return value && fromValue(*value, read) ? std::optional(std::move(read)) : std::nullopt;
}

Measurement Reading::measurement() {
  if (auto told = measurementOf(state_)) return std::move(*told);
  auto own = ownMeasurement(readings_.ownTick(), readings_.services().host, readings_.services().clock);
  own.keeperIsRunning = state_.isRunning();
  return own;
}

std::vector<DevProject> Reading::projects() {
  using Projects = std::vector<DevProject>;
  if (isKeepers()) return told<Projects>("projects").value_or(Projects());
  return readings_.ownTick().projects.value_or(Projects());
}

std::vector<StartupItem> Reading::startupItems() {
  using Items = std::vector<StartupItem>;
  if (isKeepers()) return told<Items>("startupItems").value_or(Items());
  return readings_.ownTick().startupItems.value_or(Items());
}

std::vector<HealthAlert> Reading::alerts() {
  using Alerts = std::vector<HealthAlert>;
  return told<Alerts>("alerts").value_or(Alerts());
}

std::optional<SensorsSnapshot> Reading::sensors() {
  return isKeepers() ? told<SensorsSnapshot>("sensors") : readings_.ownTick().sensors;
}

std::vector<PeripheralBattery> Reading::peripherals() {
  using Batteries = std::vector<PeripheralBattery>;
  if (isKeepers()) return told<Batteries>("peripherals").value_or(Batteries());
  return readings_.ownTick().peripherals.value_or(Batteries());
}

FigureSource Reading::source(std::initializer_list<const char*> needsKeeper) const {
  FigureSource source{.keeper = isKeepers()};
  if (source.keeper) return source;
  source.leavesOut.push_back(state_.isRunning()
                                 ? silence(state_)
                                 : localized("No Korvell is running; these figures were measured just now."));
  for (const char* sentence : needsKeeper) source.leavesOut.push_back(localized(sentence));
  return source;
}

} // namespace korvell
