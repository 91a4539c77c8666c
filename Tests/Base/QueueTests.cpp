// The contract of Queue, the same for every kind. Nothing here waits for time to pass: what must happen is
// waited for with latches, what must not happen is shown by a later task that ran without it.

#include "Base/HostedQueue.h"
#include "Base/ManualQueue.h"
#include "Base/SystemQueue.h"
#include "Base/ThreadQueue.h"

#include <atomic>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <latch>

using namespace korvell;

namespace {

constexpr Seconds none{0};

/// A queue of one kind and what it takes to keep it going.
class World {
public:
  virtual ~World() = default;
  virtual Queue& queue() = 0;
  /// Blocks until `done` is reached, letting the queue work (and time pass, where it is manual).
  virtual void await(std::latch& done) { done.wait(); }
  /// Runs a task on the queue and waits for it; the tasks added before have run by then.
  void settle(const Task& task = [] {}) {
    std::latch done(1);
    queue().async([&] {
      task();
      done.count_down();
    });
    await(done);
  }
  virtual void destroyQueue() = 0;
};

class FactoryWorld final : public World {
public:
  explicit FactoryWorld(const QueueFactory& factory) : queue_(factory("Korvell.test")) {}
  Queue& queue() override { return *queue_; }
  void destroyQueue() override { queue_.reset(); }

private:
  std::unique_ptr<Queue> queue_;
};

/// A hosted queue with a loop around it, as an application has.
class HostedWorld final : public World {
public:
  HostedWorld() {
    std::latch ready(1);
    host_ = std::thread([this, &ready] { loop(ready); });
    ready.wait();
  }
  ~HostedWorld() override { destroyQueue(); }
  Queue& queue() override { return *queue_; }
  void destroyQueue() override {
    if (!host_.joinable()) return;
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
      condition_.notify_all();
    }
    host_.join();
  }

private:
  void loop(std::latch& ready) {
    queue_ = std::make_unique<HostedQueue>("Korvell.test", [this] {
      const std::lock_guard lock(mutex_);
      woken_ = true;
      condition_.notify_all();
    });
    ready.count_down();
    std::unique_lock lock(mutex_);
    while (!stopping_) {
      woken_ = false;
      lock.unlock();
      queue_->runDue();
      const auto deadline = queue_->nextDeadline();
      lock.lock();
      const auto wanted = [this] { return woken_ || stopping_; };
      if (deadline)
        condition_.wait_for(lock, deadline->due - queue_->clock().monotonic(), wanted);
      else
        condition_.wait(lock, wanted);
    }
    lock.unlock();
    queue_.reset();
  }
  std::mutex mutex_;
  std::condition_variable condition_;
  bool woken_ = false, stopping_ = false;
  std::unique_ptr<HostedQueue> queue_;
  std::thread host_;
};

class ManualWorld final : public World {
public:
  Queue& queue() override { return *queue_; }
  void await(std::latch& done) override {
    while (!done.try_wait()) scheduler_.advance(Seconds{0.25});
  }
  void destroyQueue() override { queue_.reset(); }

private:
  ManualScheduler scheduler_;
  std::unique_ptr<Queue> queue_ = scheduler_.makeQueue("Korvell.test");
};

struct Kind {
  const char* name;
  std::function<std::unique_ptr<World>()> make;
};

class QueueContract : public testing::TestWithParam<Kind> {
protected:
  std::unique_ptr<World> world = GetParam().make();
  Queue& queue() { return world->queue(); }
};

} // namespace

TEST_P(QueueContract, tasksRunInTheirOrderOneAtATime) {
  std::vector<int> order; // unprotected on purpose: the thread sanitizer watches
  for (int i = 0; i < 50; ++i) queue().async([&order, i] { order.push_back(i); });
  queue().sync([&] { order.push_back(50); });
  world->settle();
  ASSERT_EQ(order.size(), 51u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST_P(QueueContract, aTaskKnowsItsQueue) {
  EXPECT_EQ(queue().label(), "Korvell.test");
  EXPECT_FALSE(queue().isCurrent());
  world->settle([&] { EXPECT_TRUE(queue().isCurrent()); });
  EXPECT_EQ(syncResult(queue(), [&] { return queue().isCurrent(); }), true);
  EXPECT_FALSE(queue().isCurrent());
}

TEST_P(QueueContract, syncOnItselfRunsInlineBeforeWhatWaits) {
  std::vector<int> order;
  world->settle([&] {
    queue().async([&] { order.push_back(2); });
    queue().sync([&] { order.push_back(1); });
  });
  world->settle();
  EXPECT_EQ(order, (std::vector{1, 2}));
}

TEST_P(QueueContract, aTimerRepeatsUntilItIsCancelledOnItsQueue) {
  std::latch thrice(3);
  std::unique_ptr<Timer> timer;
  int fired = 0;
  timer = queue().timer([&] {
    EXPECT_TRUE(queue().isCurrent());
    if (++fired == 3) timer->cancel();
    thrice.count_down();
  });
  timer->schedule(Seconds{0.001}, Seconds{0.001}, none);
  world->await(thrice);
  world->settle();
  EXPECT_EQ(fired, 3);
}

TEST_P(QueueContract, aSingleTimerFiresOnceAndCanBeScheduledAgain) {
  int fired = 0;
  std::latch first(1), second(2);
  auto timer = queue().timer([&] {
    ++fired;
    if (!first.try_wait()) first.count_down();
    second.count_down();
  });
  timer->schedule(none, none, Seconds{0.2});
  world->await(first);
  world->settle();
  EXPECT_EQ(fired, 1);
  timer->schedule(Seconds{-5}, none, none);
  world->await(second);
  EXPECT_EQ(fired, 2);
}

TEST_P(QueueContract, aNewScheduleReplacesTheOldOne) {
  std::atomic<int> fired = 0;
  std::latch done(1);
  auto timer = queue().timer([&] {
    ++fired;
    done.count_down();
  });
  world->settle([&] {
    timer->schedule(none, none, none); // due at once, but the queue is busy
    timer->schedule(Seconds{0.002}, none, none);
  });
  world->await(done);
  world->settle();
  EXPECT_EQ(fired, 1);
}

TEST_P(QueueContract, nothingFiresAfterCancelOrDestructionOnTheQueue) {
  int fired = 0;
  auto cancelled = queue().timer([&] { ++fired; });
  auto destroyed = queue().timer([&] { ++fired; });
  world->settle([&] {
    cancelled->schedule(none, Seconds{0.001}, none);
    destroyed->schedule(none, Seconds{0.001}, none);
    cancelled->cancel();
    destroyed.reset();
  });
  // A third one that fires after the times at which those would have.
  std::latch later(1);
  auto witness = queue().timer([&] { later.count_down(); });
  witness->schedule(Seconds{0.005}, none, none);
  world->await(later);
  world->settle();
  EXPECT_EQ(fired, 0);
}

TEST_P(QueueContract, aHandlerMayDestroyItsTimer) {
  auto kept = std::make_shared<int>(7);
  std::unique_ptr<Timer> timer;
  std::latch done(1);
  timer = queue().timer([&, kept] {
    timer.reset();
    EXPECT_EQ(*kept, 7); // still there: what the handler holds lives until it returns
    done.count_down();
  });
  timer->schedule(none, Seconds{0.001}, none);
  world->await(done);
  world->settle();
}

TEST_P(QueueContract, aTimerMayOutliveItsQueue) {
  int fired = 0;
  auto timer = queue().timer([&] { ++fired; });
  world->destroyQueue();
  timer->schedule(none, Seconds{0.001}, none);
  timer->cancel();
  timer.reset();
  EXPECT_EQ(fired, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, QueueContract,
    testing::Values(Kind{"Thread",
                         [] {
                           return std::make_unique<FactoryWorld>([](std::string label) {
                             return std::make_unique<ThreadQueue>(std::move(label));
                           });
                         }},
                    Kind{"System", [] { return std::make_unique<FactoryWorld>(systemQueueFactory()); }},
                    Kind{"Hosted", [] { return std::make_unique<HostedWorld>(); }},
                    Kind{"Manual", [] { return std::make_unique<ManualWorld>(); }}),
    [](const auto& info) { return info.param.name; });

TEST(ThreadQueue, destructionFinishesTheRunningTaskAndDropsTheRest) {
  std::latch running(1), mayEnd(1);
  std::atomic<bool> finished = false;
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watched = held;
  std::thread releaser;
  {
    ThreadQueue queue("Korvell.test");
    queue.async([&] {
      running.count_down();
      mayEnd.wait();
      finished = true;
    });
    queue.async([held = std::move(held)] { EXPECT_TRUE(held); });
    running.wait();
    releaser = std::thread([&] { mayEnd.count_down(); });
    // Whether the second task is dropped depends on who is first; that the first one ends does not.
  }
  releaser.join();
  EXPECT_TRUE(finished);
  EXPECT_TRUE(watched.expired()) << "what a dropped task holds is given back";
}

TEST(ThreadQueue, aTaskMayDestroyItsQueue) {
  std::promise<bool> ended;
  auto* queue = new ThreadQueue("Korvell.test");
  queue->async([&] {
    delete queue;
    ended.set_value(true);
  });
  EXPECT_TRUE(ended.get_future().get());
}

TEST(HostedQueue, wakesOncePerRunAndLeavesNewTasksForTheNext) {
  int wakes = 0;
  std::vector<int> order;
  HostedQueue queue("main", [&] { ++wakes; });
  EXPECT_FALSE(queue.nextDeadline());
  queue.async([&] {
    order.push_back(1);
    queue.async([&] { order.push_back(3); });
  });
  queue.async([&] { order.push_back(2); });
  EXPECT_EQ(wakes, 1);
  queue.runDue();
  EXPECT_EQ(order, (std::vector{1, 2}));
  EXPECT_EQ(wakes, 2);
  const auto due = queue.nextDeadline()->due;
  EXPECT_LE(due, queue.clock().monotonic()) << "there is something to do now";
  queue.runDue();
  EXPECT_EQ(order, (std::vector{1, 2, 3}));
  EXPECT_FALSE(queue.nextDeadline());
}

TEST(HostedQueue, aWaitingThreadIsReleasedWhenTheQueueGoesAway) {
  std::latch added(1);
  auto queue = std::make_unique<HostedQueue>("main", [&] { added.count_down(); });
  bool ran = false;
  std::thread waiting([&] { queue->sync([&] { ran = true; }); });
  added.wait();
  queue.reset();
  waiting.join();
  EXPECT_FALSE(ran);
}
