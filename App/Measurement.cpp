#include "App/Measurement.h"

#include "App/Assembly.h"

#include <thread>

namespace korvell {

namespace {

/// The first cycle runs every slower task, the second one a second later none.
void keepSlowReadings(const Tick& first, Tick& tick) {
  const auto keep = [](const auto& earlier, auto& later) {
    if (!later) later = earlier;
  };
  keep(first.sensors, tick.sensors);
  keep(first.peripherals, tick.peripherals);
  keep(first.projects, tick.projects);
  keep(first.startupItems, tick.startupItems);
}

template <class T>
std::optional<T> partOf(const KeeperAnswer& state, const char* name) {
  const auto* told = state.value ? state.value->find(name) : nullptr;
  T read;
  return told && fromValue(*told, read) ? std::optional(std::move(read)) : std::nullopt;
}

} // namespace

std::optional<HistoryProblem> historyProblemOf(const KeeperAnswer& state) {
  return partOf<HistoryProblem>(state, "historyProblem");
}

std::optional<Measurement> measurementOf(const KeeperAnswer& state) {
  if (!state) return std::nullopt;
  auto snapshot = partOf<SystemSnapshot>(state, "snapshot");
  auto report = partOf<HealthReport>(state, "report");
  const auto known = partOf<KnownParts>(state, "known");
  if (!snapshot || !known || !report) return std::nullopt;
  return Measurement{.snapshot = std::move(*snapshot),
                     .known = *known,
                     .report = std::move(*report),
                     .sensors = partOf<SensorsSnapshot>(state, "sensors"),
                     .privileged = partOf<PrivilegedUse>(state, "privileged"),
                     .historyProblem = historyProblemOf(state),
                     .fromKeeper = true,
                     .keeperIsRunning = true};
}

Tick measureTwice(Host& host, const Clock& clock) {
  Assembly assembly(host, clock);
  const auto sampler = assembly.makeSampler(nullptr);
  const auto cycle = [&sampler] { return sampler->tick(); };
  const Tick first = syncResult(sampler->queue(), cycle);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  Tick tick = syncResult(sampler->queue(), cycle);
  keepSlowReadings(first, tick);
  return tick;
}

Measurement ownMeasurement(Tick tick, const Host& host, const Clock& clock) {
  Measurement own{.known = tick.known, .privileged = tick.privileged};
  own.report =
      HealthReport::make(tick.snapshot, tick.sensors, tick.cpuTenMinuteAverage,
                         tick.projects.value_or(std::vector<DevProject>()),
                         tick.startupItems.value_or(std::vector<StartupItem>()), *host.state, clock.now());
  own.snapshot = std::move(tick.snapshot);
  own.sensors = std::move(tick.sensors);
  return own;
}

} // namespace korvell
