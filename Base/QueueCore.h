#pragma once
// What the queues that are ours have in common: tasks in their order, and timers. Whoever owns the core
// decides when it runs something; the core says when there is reason to. All methods from any thread, except
// that runNext() is called by one thread at a time.

#include "Base/Queue.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

namespace korvell {

/// When the next timer fires: not before `due`, and at most `leeway` later.
struct QueueDeadline {
  Seconds due;    ///< on the queue's monotonic clock
  Seconds leeway; ///< so small that no timer comes later than its own leeway allows
};

class QueueCore : public std::enable_shared_from_this<QueueCore> {
public:
  /// `changed` is called, on the thread that caused it and without a lock held, when a task was added or an
  /// earlier deadline set.
  QueueCore(std::shared_ptr<const Clock> clock, std::function<void()> changed);

  void add(Task task);
  [[nodiscard]] std::unique_ptr<Timer> makeTimer(Task handler);
  /// Adds a task and waits until it has run, or until close() has dropped it.
  void addAndWait(const Task& task);

  /// Runs the oldest task, timers that are due included; false when there was none. `run` may call it in its
  /// own way.
  using Run = std::function<void(const Task&)>;
  bool runNext(const Run& run = {});
  /// How many tasks wait to be run, timers that are due included.
  size_t waiting();
  /// When there will be something to run: now, a timer's firing, or nothing so far.
  std::optional<QueueDeadline> deadline() const;
  /// Drops all tasks and timers and takes no more.
  void close();

  const Clock& clock() const { return *clock_; }

private:
  class CoreTimer;
  struct TimerState {
    Task handler;
    bool scheduled = false;
    Seconds first{};        ///< monotonic
    std::int64_t beats = 0; ///< intervals from `first` to the next firing
    Seconds interval{};
    Seconds leeway{};
    std::uint64_t generation = 0; ///< a firing of an earlier schedule is void
    bool queued = false;

    Seconds due() const { return first + double(beats) * interval; }
  };
  struct Item {
    Task task;                         ///< of a plain task
    std::shared_ptr<TimerState> timer; ///< of a firing
    std::uint64_t generation = 0;
  };

  void collectDue();
  void schedule(TimerState& state, Seconds first, Seconds interval, Seconds leeway);
  void cancel(TimerState& state);
  void forget(const std::shared_ptr<TimerState>& state);

  const std::shared_ptr<const Clock> clock_;
  const std::function<void()> changed_;
  mutable std::mutex mutex_;
  bool closed_ = false;
  std::deque<Item> items_;
  std::vector<std::shared_ptr<TimerState>> timers_;
};

} // namespace korvell
