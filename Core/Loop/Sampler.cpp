#include "Core/Loop/Sampler.h"

namespace korvell {

Sampler::Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine,
                 std::unique_ptr<ProcessSampler> processes)
    : queue_(std::move(queue)), system_(machine, queue_->clock()), processes_(std::move(processes)) {}

// The queue first: a task that still runs there uses the other members.
Sampler::~Sampler() { queue_.reset(); }

// The order of a cycle: the machine, its processes, then the tasks with clocks of their own (sensors,
// development servers, peripherals, startup items), then, from the second cycle on because the first has no
// rates, what is made of the sample (history, weekly report, alerts, averages, totals).
Tick Sampler::tick() {
  Tick tick;
  tick.snapshot = SystemSnapshot::empty(queue_->clock().now());
  system_.sample(tick.snapshot);
  if (processes_) tick.snapshot.apps = processes_->sample({});
  ++count_;
  return tick;
}

} // namespace korvell
