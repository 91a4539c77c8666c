#include "Base/QueueCore.h"

#include <algorithm>
#include <cmath>
#include <condition_variable>

namespace korvell {

namespace {

/// Sums of fractions of a second may miss the instant that they mean by less than this.
constexpr Seconds tolerance{1e-9};

/// Tells a waiting thread that its task has run or will never run: the last copy that goes away says so.
class Completion {
public:
  void wait() {
    std::unique_lock lock(mutex_);
    condition_.wait(lock, [this] { return done_; });
  }
  /// Handed to the task; reports when the task is destroyed.
  static std::shared_ptr<void> reporter(const std::shared_ptr<Completion>& completion) {
    return std::shared_ptr<void>(nullptr, [completion](void*) { completion->report(); });
  }

private:
  void report() {
    const std::lock_guard lock(mutex_);
    done_ = true;
    condition_.notify_all();
  }
  std::mutex mutex_;
  std::condition_variable condition_;
  bool done_ = false;
};

} // namespace

class QueueCore::CoreTimer final : public Timer {
public:
  CoreTimer(std::shared_ptr<QueueCore> core, std::shared_ptr<TimerState> state)
      : core_(std::move(core)), state_(std::move(state)) {}
  ~CoreTimer() override { core_->forget(state_); }
  void schedule(Seconds first, Seconds interval, Seconds leeway) override {
    core_->schedule(*state_, first, interval, leeway);
  }
  void cancel() override { core_->cancel(*state_); }

private:
  std::shared_ptr<QueueCore> core_;
  std::shared_ptr<TimerState> state_;
};

QueueCore::QueueCore(std::shared_ptr<const Clock> clock, std::function<void()> changed)
    : clock_(std::move(clock)), changed_(std::move(changed)) {}

void QueueCore::add(Task task) {
  {
    const std::lock_guard lock(mutex_);
    if (closed_) return;
    items_.push_back({std::move(task), nullptr, 0});
  }
  changed_();
}

void QueueCore::addAndWait(const Task& task) {
  const auto self = shared_from_this(); // the queue may go away while this thread waits
  auto completion = std::make_shared<Completion>();
  add([&task, report = Completion::reporter(completion)] { task(); });
  completion->wait();
}

std::unique_ptr<Timer> QueueCore::makeTimer(Task handler) {
  auto state = std::make_shared<TimerState>();
  state->handler = std::move(handler);
  {
    const std::lock_guard lock(mutex_);
    if (!closed_) timers_.push_back(state);
  }
  return std::make_unique<CoreTimer>(shared_from_this(), std::move(state));
}

void QueueCore::schedule(TimerState& state, Seconds first, Seconds interval, Seconds leeway) {
  {
    const std::lock_guard lock(mutex_);
    state.first = clock_->monotonic() + std::max(first, Seconds{0});
    state.beats = 0;
    state.interval = std::max(interval, Seconds{0});
    state.leeway = std::max(leeway, Seconds{0});
    state.scheduled = true;
    state.queued = false;
    ++state.generation;
  }
  changed_();
}

void QueueCore::cancel(TimerState& state) {
  const std::lock_guard lock(mutex_);
  state.scheduled = state.queued = false;
  ++state.generation;
}

void QueueCore::forget(const std::shared_ptr<TimerState>& state) {
  cancel(*state);
  const std::lock_guard lock(mutex_);
  std::erase(timers_, state);
}

/// With the lock held: a task for each timer that is due, in the order in which they became due.
void QueueCore::collectDue() {
  if (timers_.empty()) return;
  const Seconds now = clock_->monotonic() + tolerance;
  std::vector<std::shared_ptr<TimerState>> due;
  for (const auto& timer : timers_)
    if (timer->scheduled && timer->due() <= now) due.push_back(timer);
  std::stable_sort(due.begin(), due.end(), [](const auto& a, const auto& b) { return a->due() < b->due(); });
  for (const auto& timer : due) {
    if (!timer->queued) items_.push_back({{}, timer, timer->generation});
    timer->queued = true;
    if (timer->interval > Seconds{0})
      timer->beats = std::int64_t(std::floor((now - timer->first) / timer->interval)) + 1;
    else
      timer->scheduled = false;
  }
}

bool QueueCore::runNext(const Run& run) {
  for (;;) {
    Item item;
    {
      const std::lock_guard lock(mutex_);
      collectDue();
      if (items_.empty()) return false;
      item = std::move(items_.front());
      items_.pop_front();
      if (item.timer) {
        if (item.generation != item.timer->generation) continue;
        item.timer->queued = false;
      }
    }
    const Task& task = item.timer ? item.timer->handler : item.task;
    run ? run(task) : task();
    return true;
  }
}

size_t QueueCore::waiting() {
  const std::lock_guard lock(mutex_);
  collectDue();
  return items_.size();
}

std::optional<QueueDeadline> QueueCore::deadline() const {
  const std::lock_guard lock(mutex_);
  if (!items_.empty()) return QueueDeadline{clock_->monotonic(), Seconds{0}};
  std::optional<Seconds> first, latest;
  for (const auto& timer : timers_) {
    if (!timer->scheduled) continue;
    first = std::min(first.value_or(timer->due()), timer->due());
    latest = std::min(latest.value_or(timer->due() + timer->leeway), timer->due() + timer->leeway);
  }
  if (!first) return std::nullopt;
  return QueueDeadline{*first, *latest - *first};
}

void QueueCore::close() {
  // What a task holds may lead back here when it is destroyed: not under the lock.
  std::deque<Item> items;
  std::vector<std::shared_ptr<TimerState>> timers;
  const std::lock_guard lock(mutex_);
  closed_ = true;
  items.swap(items_);
  timers.swap(timers_);
  for (const auto& timer : timers) ++timer->generation;
}

} // namespace korvell
