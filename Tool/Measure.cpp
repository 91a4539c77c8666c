#include "Tool/Measure.h"

#include "Base/SystemQueue.h"

#include <thread>

namespace korvell {

std::unique_ptr<Sampler> makeSampler(Context& context) {
  return std::make_unique<Sampler>(systemQueueFactory()(Sampler::queueLabel), *context.host.machine);
}

Tick measure(Context& context) {
  const auto sampler = makeSampler(context);
  const auto cycle = [&sampler] { return sampler->tick(); };
  syncResult(sampler->queue(), cycle);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  return syncResult(sampler->queue(), cycle);
}

} // namespace korvell
