#include "Tool/Measure.h"

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

} // namespace korvell
