#include "Tool/Measure.h"

#include "App/Assembly.h"
#include "Tool/AskKeeper.h"

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

} // namespace

Tick measure(Context& context) {
  Assembly assembly(context.host, context.clock);
  const auto sampler = assembly.makeSampler(nullptr);
  const auto cycle = [&sampler] { return sampler->tick(); };
  const Tick first = syncResult(sampler->queue(), cycle);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  Tick tick = syncResult(sampler->queue(), cycle);
  keepSlowReadings(first, tick);
  return tick;
}

namespace {

std::optional<Measurement> toldBy(const KeeperAnswer& state) {
  Measurement told{.fromKeeper = true};
  const auto* snapshot = state ? state->find("snapshot") : nullptr;
  const auto* known = state ? state->find("known") : nullptr;
  const auto* report = state ? state->find("report") : nullptr;
  if (!snapshot || !known || !report) return std::nullopt;
  if (!fromValue(*snapshot, told.snapshot) || !fromValue(*known, told.known) ||
      !fromValue(*report, told.report))
    return std::nullopt;
  const auto* privileged = state->find("privileged");
  if (PrivilegedUse use; privileged && fromValue(*privileged, use)) told.privileged = use;
  return told;
}

std::optional<HistoryProblem> historyProblem(const KeeperAnswer& state) {
  const auto* problem = state.value ? state.value->find("historyProblem") : nullptr;
  HistoryProblem told;
  return problem && fromValue(*problem, told) ? std::optional(std::move(told)) : std::nullopt;
}

Measurement ownMeasurement(Context& context) {
  Tick tick = measure(context);
  Measurement own{.known = tick.known, .privileged = tick.privileged};
  own.report = HealthReport::make(tick.snapshot, tick.sensors, tick.cpuTenMinuteAverage,
                                  tick.projects.value_or(std::vector<DevProject>()),
                                  tick.startupItems.value_or(std::vector<StartupItem>()), *context.host.state,
                                  context.clock.now());
  own.snapshot = std::move(tick.snapshot);
  return own;
}

} // namespace

Measurement currentMeasurement(Context& context) {
  const auto state = askKeeper(context, {"snapshot", "known", "report", "privileged", "historyProblem"});
  auto told = toldBy(state);
  if (!told) told = ownMeasurement(context);
  told->historyProblem = historyProblem(state);
  told->keeperIsRunning = state.isRunning();
  return std::move(*told);
}

} // namespace korvell
