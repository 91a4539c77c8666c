#include "Base/ManualQueue.h"

#include <algorithm>
#include <stdexcept>

namespace korvell {

void ManualClock::elapse(Seconds span) {
  now_ = now_ + span.count();
  monotonic_ = monotonic_ + span.count();
}

ManualScheduler::ManualScheduler(Date start) : clock_(std::make_shared<ManualClock>(start)) {}

std::unique_ptr<Queue> ManualScheduler::makeQueue(std::string label) {
  return std::make_unique<ManualQueue>(*this, std::move(label));
}

std::unique_ptr<Queue> ManualScheduler::makeMainQueue() {
  return std::make_unique<ManualQueue>(*this, "main", true);
}

QueueFactory ManualScheduler::factory() {
  return [this](std::string label) { return makeQueue(std::move(label)); };
}

void ManualScheduler::run() {
  // Turn and turn about, one task each; a task may make or destroy queues.
  for (bool ranAny = true; ranAny;) {
    ranAny = false;
    for (size_t i = 0; i < queues_.size(); ++i) ranAny = queues_[i]->runNext() || ranAny;
  }
}

void ManualScheduler::advance(Seconds span) {
  const Seconds target = clock_->monotonic() + span;
  for (;;) {
    run();
    std::optional<Seconds> next;
    for (const auto* queue : queues_)
      if (const auto deadline = queue->core_->deadline(); deadline && deadline->due <= target)
        next = std::min(next.value_or(deadline->due), deadline->due);
    if (!next || *next <= clock_->monotonic()) break;
    clock_->elapse(*next - clock_->monotonic());
  }
  clock_->elapse(target - clock_->monotonic());
  run();
}

ManualQueue::ManualQueue(ManualScheduler& scheduler, std::string label, bool isMain)
    : scheduler_(scheduler), label_(std::move(label)), isMain_(isMain),
      core_(std::make_shared<QueueCore>(scheduler.clock_, [] {})) {
  scheduler_.queues_.push_back(this);
}

ManualQueue::~ManualQueue() {
  std::erase(scheduler_.queues_, this);
  core_->close();
}

bool ManualQueue::runNext() {
  if (*running_) return false;
  bool ran = false;
  runAs([&, core = core_] { ran = core->runNext(); });
  return ran;
}

void ManualQueue::runAs(const Task& task) {
  auto& current = scheduler_.current_;
  auto* const before = std::exchange(current, this);
  const auto running = running_;
  *running = true;
  task();
  *running = false;
  current = before;
}

void ManualQueue::sync(const Task& task) {
  if (isCurrent()) return task();
  if (*running_) throw std::logic_error(label_ + " waits for a queue that waits for it");
  while (runNext()) {
  }
  runAs(task);
}

} // namespace korvell
