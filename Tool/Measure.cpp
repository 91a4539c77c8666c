#include "Tool/Measure.h"

#include "Base/SystemQueue.h"
#include "Core/Loop/Sampler.h"

#include <thread>

namespace korvell {

Tick measure(Context& context) {
  Sampler sampler(systemQueueFactory()(Sampler::queueLabel), *context.host.machine);
  const auto cycle = [&sampler] { return sampler.tick(); };
  syncResult(sampler.queue(), cycle);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  return syncResult(sampler.queue(), cycle);
}

} // namespace korvell
