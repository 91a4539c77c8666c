#pragma once
// Queues under a test's control: nothing runs until the test says so, all on the test's thread.
//
//   ManualScheduler time;
//   Sampler sampler(time.factory(), time.clock());
//   time.advance(Seconds{10}); // fires, on all its queues, what becomes due in these ten seconds, in order
//
// The scheduler outlives its queues.

#include "Base/QueueCore.h"

#include <atomic>
#include <vector>

namespace korvell {

/// A clock that moves when it is told to. The wall clock can be set without the monotonic one noticing.
class ManualClock final : public Clock {
public:
  explicit ManualClock(Date start = {1'772'366'400}) : now_(start.sinceEpoch) {} // 2026-03-01 12:00 UTC
  Date now() const override { return {now_}; }
  Seconds monotonic() const override { return Seconds{monotonic_}; }
  /// Sets the wall clock, forward or back.
  void setNow(Date now) { now_ = now.sinceEpoch; }
  /// Lets time pass on both clocks without running anything.
  void elapse(Seconds span);

private:
  std::atomic<double> now_;
  std::atomic<double> monotonic_ = 0;
};

class ManualQueue;

class ManualScheduler {
public:
  explicit ManualScheduler(Date start = ManualClock().now());
  ManualClock& clock() { return *clock_; }
  std::unique_ptr<Queue> makeQueue(std::string label);
  /// The main queue: the test's own code counts as running on it, as code on the main loop's thread does.
  std::unique_ptr<Queue> makeMainQueue();
  QueueFactory factory();

  /// Runs what is ready on all queues, what that adds included, without letting time pass.
  void run();
  /// Lets time pass and runs whatever becomes ready, each at its own instant.
  void advance(Seconds span);

private:
  friend class ManualQueue;
  std::shared_ptr<ManualClock> clock_;
  std::vector<ManualQueue*> queues_; ///< in the order in which they were made
  ManualQueue* current_ = nullptr;
};

/// sync() first runs the tasks added before, then its own, inline. Where two threads would wait for each
/// other it throws std::logic_error instead.
class ManualQueue final : public Queue {
public:
  ManualQueue(ManualScheduler& scheduler, std::string label, bool isMain = false);
  ~ManualQueue() override;
  ManualQueue(const ManualQueue&) = delete;
  ManualQueue& operator=(const ManualQueue&) = delete;

  const std::string& label() const override { return label_; }
  void async(Task task) override { core_->add(std::move(task)); }
  void sync(const Task& task) override;
  [[nodiscard]] std::unique_ptr<Timer> timer(Task handler) override {
    return core_->makeTimer(std::move(handler));
  }
  bool isCurrent() const override { return scheduler_.current_ == this || (isMain_ && !scheduler_.current_); }
  const Clock& clock() const override { return core_->clock(); }

private:
  friend class ManualScheduler;
  /// False when nothing is ready, or when this queue is in the middle of a task.
  bool runNext();
  void runAs(const Task& task);

  ManualScheduler& scheduler_;
  const std::string label_;
  const bool isMain_;
  std::shared_ptr<QueueCore> core_;
  std::shared_ptr<bool> running_ = std::make_shared<bool>(false); ///< a task may destroy its queue
};

} // namespace korvell
