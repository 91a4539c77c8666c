#pragma once
// Serial queues and their timers: where every long-lived object lives, and the only way threads meet.
//
// A queue runs its tasks one after the other in the order in which they were added; a timer's firing is a
// task that is added when it is due. Four kinds exist: ThreadQueue (one thread of its own,
// Base/ThreadQueue.h), the system's dispatch queues on macOS, HostedQueue (the main queue: whoever runs the
// loop asks for the work, Base/HostedQueue.h) and ManualQueue (tests, Base/ManualQueue.h). Base/SystemQueue.h
// makes the one that suits the system.
//
// Timers go by time that stands still while the machine sleeps (CLOCK_MONOTONIC on Linux, the clock of
// mach_absolute_time on macOS): a timer of ten seconds that has run four when the lid is shut fires six
// seconds after it was opened. What is due by the calendar asks Clock::now() when a timer fires.
//
// Destroying a queue finishes the task that runs, drops the rest and joins; destroy queues that post before
// the queues that are posted to. The main thread never calls sync(), and no queue may wait in sync() for
// one that waits for it.

#include "Base/Date.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace korvell {

using Task = std::function<void()>;

/// A repeating or single timer on one queue, which it may outlive. Its handler runs on that queue. After
/// cancel(), or the destructor, no firing begins; called from another thread they may return while one is
/// under way. Firings that were missed are not made up for: one firing stands for all, and the next ones keep
/// to the first one's beat.
class Timer {
public:
  virtual ~Timer() = default;
  /// First firing `first` from now, then every `interval` (zero: once). Replaces any earlier schedule.
  /// `leeway` is how late a firing may come so that the system can let wake-ups coincide.
  virtual void schedule(Seconds first, Seconds interval, Seconds leeway) = 0;
  /// The timer rests until it is scheduled again.
  virtual void cancel() = 0;
};

class Queue {
public:
  virtual ~Queue() = default;
  virtual const std::string& label() const = 0;
  /// Adds a task; returns at once. From any thread.
  virtual void async(Task task) = 0;
  /// Runs a task after those added before and waits for its end; on this queue itself it runs inline.
  virtual void sync(const Task& task) = 0;
  /// A timer that is not yet scheduled. From any thread.
  [[nodiscard]] virtual std::unique_ptr<Timer> timer(Task handler) = 0;
  /// True on the thread that is running one of this queue's tasks.
  virtual bool isCurrent() const = 0;
  /// The clock that the queue's timers go by.
  virtual const Clock& clock() const = 0;
};

/// sync() with a result.
template <class F>
auto syncResult(Queue& queue, F&& work) {
  std::optional<decltype(work())> result;
  queue.sync([&] { result.emplace(work()); });
  return std::move(*result);
}

/// Makes queues by label: threads in the application and the tool, manual ones in tests.
using QueueFactory = std::function<std::unique_ptr<Queue>(std::string label)>;

} // namespace korvell
