#include "Base/macOS/DispatchQueue.h"

#include <algorithm>
#include <atomic>
#include <dispatch/dispatch.h>

namespace korvell {

struct DispatchQueue::Shared {
  Shared(const std::string& label, Priority priority)
      : queue(dispatch_queue_create(label.c_str(), priority == Priority::usual
                                                       ? DISPATCH_QUEUE_SERIAL
                                                       : dispatch_queue_attr_make_with_qos_class(
                                                             DISPATCH_QUEUE_SERIAL, QOS_CLASS_UTILITY, 0))) {
    dispatch_queue_set_specific(queue, this, this, nullptr);
  }
  ~Shared() { dispatch_release(queue); }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;

  bool isCurrent() const { return dispatch_get_specific(this) == this; }

  dispatch_queue_t const queue;
  std::atomic<bool> stopping = false; ///< what is still waiting is dropped
};

namespace {

std::uint64_t nanoseconds(Seconds span) { return std::uint64_t(std::clamp(span.count() * 1e9, 0.0, 9e18)); }

template <class State>
struct Work {
  std::shared_ptr<State> state;
  Task task;
};

template <class State>
void runWork(void* context) {
  const std::unique_ptr<Work<State>> work(static_cast<Work<State>*>(context));
  if (!work->state->stopping) work->task();
}

/// What the source's handlers refer to; deleted by the source's cancellation handler, which the system calls
/// on the queue after the last firing.
template <class State>
struct Firing {
  std::shared_ptr<State> state;
  Task handler;
  std::atomic<bool> scheduled = false;
  std::atomic<bool> once = false;

  static void fire(void* context) {
    auto* firing = static_cast<Firing*>(context);
    if (firing->state->stopping || !firing->scheduled) return;
    if (firing->once) firing->scheduled = false;
    firing->handler();
  }
  static void destroy(void* context) { delete static_cast<Firing*>(context); }
};

template <class State>
class DispatchTimer final : public Timer {
public:
  DispatchTimer(const std::shared_ptr<State>& state, Task handler)
      : source_(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, state->queue)),
        firing_(new Firing<State>{state, std::move(handler)}) {
    dispatch_set_context(source_, firing_);
    dispatch_source_set_event_handler_f(source_, &Firing<State>::fire);
    dispatch_source_set_cancel_handler_f(source_, &Firing<State>::destroy);
    rest();
    dispatch_resume(source_); // a source that is still suspended may not be released
  }
  ~DispatchTimer() override {
    firing_->scheduled = false;
    dispatch_source_cancel(source_);
    dispatch_release(source_);
  }
  DispatchTimer(const DispatchTimer&) = delete;
  DispatchTimer& operator=(const DispatchTimer&) = delete;

  void schedule(Seconds first, Seconds interval, Seconds leeway) override {
    const bool once = interval <= Seconds{0};
    firing_->once = once;
    firing_->scheduled = true;
    // Setting a source's timer also forgets firings of the earlier schedule.
    dispatch_source_set_timer(source_, dispatch_time(DISPATCH_TIME_NOW, std::int64_t(nanoseconds(first))),
                              once ? DISPATCH_TIME_FOREVER
                                   : std::max(nanoseconds(interval), std::uint64_t{1}),
                              nanoseconds(leeway));
  }
  void cancel() override {
    firing_->scheduled = false;
    rest();
  }

private:
  void rest() { dispatch_source_set_timer(source_, DISPATCH_TIME_FOREVER, DISPATCH_TIME_FOREVER, 0); }

  dispatch_source_t source_;
  Firing<State>* firing_;
};

} // namespace

DispatchQueue::DispatchQueue(std::string label, Priority priority)
    : label_(std::move(label)), shared_(std::make_shared<Shared>(label_, priority)) {}

DispatchQueue::~DispatchQueue() {
  shared_->stopping = true;
  if (!shared_->isCurrent()) dispatch_sync_f(shared_->queue, nullptr, [](void*) {}); // the task that runs
}

void DispatchQueue::async(Task task) {
  dispatch_async_f(shared_->queue, new Work<Shared>{shared_, std::move(task)}, &runWork<Shared>);
}

void DispatchQueue::sync(const Task& task) {
  if (isCurrent()) return task();
  dispatch_sync_f(shared_->queue, new Work<Shared>{shared_, task}, &runWork<Shared>);
}

std::unique_ptr<Timer> DispatchQueue::timer(Task handler) {
  return std::make_unique<DispatchTimer<Shared>>(shared_, std::move(handler));
}

bool DispatchQueue::isCurrent() const { return shared_->isCurrent(); }

} // namespace korvell
