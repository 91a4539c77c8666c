#include "Base/ThreadQueue.h"

#include "Base/ThreadControl.h"

#include <cmath>
#include <condition_variable>
#include <csignal>

namespace korvell {

struct ThreadQueue::Shared {
  std::mutex mutex;
  std::condition_variable condition;
  bool woken = false;
  bool stopping = false;
  std::shared_ptr<QueueCore> core;

  void wake() {
    const std::lock_guard lock(mutex);
    woken = true;
    condition.notify_one();
  }
  /// False when the thread is to end.
  bool keepsRunning() {
    const std::lock_guard lock(mutex);
    return !stopping;
  }
  void sleepUntil(const std::optional<QueueDeadline>& deadline) {
    std::unique_lock lock(mutex);
    const auto wanted = [this] { return woken || stopping; };
    if (deadline) {
      // A span, since the library's steady clock need not be the queue's.
      condition.wait_for(lock, deadline->due - core->clock().monotonic(), wanted);
    } else {
      condition.wait(lock, wanted);
    }
    woken = false;
  }
};

namespace {

/// A leeway comes out of sums that differ by rounding; it is not worth a system call each time.
Seconds wholeMicroseconds(Seconds span) { return Seconds{std::round(span.count() * 1e6) / 1e6}; }

/// Signals are for the main thread; a thread inherits the mask of the one that starts it.
class SignalsBlocked {
public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

private:
  sigset_t before_;
};

} // namespace

ThreadQueue::ThreadQueue(std::string label) : label_(std::move(label)), shared_(std::make_shared<Shared>()) {
  // The hook must not keep alive what owns it.
  shared_->core =
      std::make_shared<QueueCore>(std::make_shared<SystemClock>(), [weak = std::weak_ptr(shared_)] {
        if (const auto shared = weak.lock()) shared->wake();
      });
  const SignalsBlocked blocked;
  thread_ = std::thread([shared = shared_, label = label_] { run(shared, label); });
}

ThreadQueue::~ThreadQueue() {
  {
    const std::lock_guard lock(shared_->mutex);
    shared_->stopping = true;
    shared_->condition.notify_one();
  }
  if (isCurrent()) {
    shared_->core->close();
    thread_.detach();
  } else {
    thread_.join();
    shared_->core->close();
  }
}

void ThreadQueue::run(const std::shared_ptr<Shared>& shared, const std::string& label) {
  nameCurrentThread(label);
  Seconds slack{0};
  while (shared->keepsRunning()) {
    if (shared->core->runNext()) continue;
    const auto deadline = shared->core->deadline();
    if (const auto wanted = deadline ? wholeMicroseconds(deadline->leeway) : slack; wanted != slack) {
      slack = wanted;
      setCurrentTimerSlack(slack);
    }
    shared->sleepUntil(deadline);
  }
}

void ThreadQueue::async(Task task) { shared_->core->add(std::move(task)); }

void ThreadQueue::sync(const Task& task) {
  if (isCurrent())
    task();
  else
    shared_->core->addAndWait(task);
}

std::unique_ptr<Timer> ThreadQueue::timer(Task handler) {
  return shared_->core->makeTimer(std::move(handler));
}
bool ThreadQueue::isCurrent() const { return std::this_thread::get_id() == thread_.get_id(); }
const Clock& ThreadQueue::clock() const { return shared_->core->clock(); }

} // namespace korvell
