#include "Base/HostedQueue.h"

namespace korvell {

HostedQueue::HostedQueue(std::string label, std::function<void()> wake) : label_(std::move(label)) {
  core_ =
      std::make_shared<QueueCore>(std::make_shared<SystemClock>(), [wake = std::move(wake), awake = awake_] {
        if (!awake->exchange(true)) wake();
      });
}

HostedQueue::~HostedQueue() {
  awake_->store(true); // nobody is left to be woken
  core_->close();
}

void HostedQueue::runDue(const QueueCore::Run& run) {
  awake_->store(false);
  for (auto left = core_->waiting(); left > 0 && core_->runNext(run);) --left;
}

void HostedQueue::sync(const Task& task) {
  if (isCurrent())
    task();
  else
    core_->addAndWait(task);
}

} // namespace korvell
