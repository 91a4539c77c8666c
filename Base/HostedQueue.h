#pragma once
// The main queue. It has no thread of its own: whoever runs the main loop (the interface's toolkit, the tool)
// makes it on that thread, is told through the wake hook that there is something to do, and answers with
// runDue(). Between calls the loop sleeps until nextDeadline() at the latest. All code on the loop's thread
// counts as running on this queue.

#include "Base/QueueCore.h"

#include <atomic>
#include <thread>

namespace korvell {

class HostedQueue final : public Queue {
public:
  /// `wake` is called from any thread, without locks held, at most once between two runDue(); it returns at
  /// once and makes the loop call runDue() soon.
  HostedQueue(std::string label, std::function<void()> wake);
  ~HostedQueue() override;
  HostedQueue(const HostedQueue&) = delete;
  HostedQueue& operator=(const HostedQueue&) = delete;

  // For the loop, on its thread.
  /// Runs the tasks and timers that were ready at the call; what they add waits for the next one.
  void runDue(const QueueCore::Run& run = {});
  std::optional<QueueDeadline> nextDeadline() const { return core_->deadline(); }

  const std::string& label() const override { return label_; }
  void async(Task task) override { core_->add(std::move(task)); }
  void sync(const Task& task) override;
  [[nodiscard]] std::unique_ptr<Timer> timer(Task handler) override {
    return core_->makeTimer(std::move(handler));
  }
  bool isCurrent() const override { return std::this_thread::get_id() == thread_; }
  const Clock& clock() const override { return core_->clock(); }

private:
  const std::string label_;
  const std::thread::id thread_ = std::this_thread::get_id();
  std::shared_ptr<std::atomic<bool>> awake_ = std::make_shared<std::atomic<bool>>(false);
  std::shared_ptr<QueueCore> core_;
};

} // namespace korvell
