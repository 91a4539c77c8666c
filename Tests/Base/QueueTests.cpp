// The contract of Queue, the same for every kind. Nothing here waits for time to pass: what must happen is
// waited for with latches, what must not happen is shown by a later task that ran without it.

#include "Base/HostedQueue.h"
#include "Base/ManualQueue.h"
#include "Base/SystemQueue.h"
#include "Base/ThreadQueue.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <latch>
#include <semaphore>
#include <thread>

using namespace korvell;

namespace {

constexpr Seconds none{0};

/// A queue of one kind and what it takes to keep it going.
struct World {
  explicit World(std::unique_ptr<Queue> made = nullptr) : queue(std::move(made)) {}
  virtual ~World() = default;
  /// Blocks until `done` is reached, letting the queue work (and time pass, where it is manual).
  virtual void await(std::latch& done) { done.wait(); }
  virtual void destroyQueue() { queue.reset(); }
  /// Runs a task on the queue and waits for it; the tasks added before have run by then.
  void settle(const Task& task = [] {}) {
    std::latch done(1);
    queue->async([&] {
      task();
      done.count_down();
    });
    await(done);
  }
  std::unique_ptr<Queue> queue;
};

/// A hosted queue with a loop around it, as an application has.
struct HostedWorld final : World {
  HostedWorld() : host([this] { loop(); }) { ready.wait(); }
  ~HostedWorld() override { destroyQueue(); }
  void destroyQueue() override {
    if (!host.joinable()) return;
    stopping = true;
    wakes.release();
    host.join();
  }
  void loop() {
    auto made = std::make_unique<HostedQueue>("Korvell.test", [this] { wakes.release(); });
    auto& hosted = *made;
    queue = std::move(made);
    ready.count_down();
    while (!stopping) {
      hosted.runDue();
      if (const auto deadline = hosted.nextDeadline())
        (void)wakes.try_acquire_for(deadline->due - hosted.clock().monotonic());
      else
        wakes.acquire();
    }
    queue.reset();
  }
  std::latch ready{1};
  std::counting_semaphore<> wakes{0};
  std::atomic<bool> stopping = false;
  std::thread host;
};

struct ManualWorld final : World {
  ManualWorld() { queue = scheduler.makeQueue("Korvell.test"); }
  ~ManualWorld() override { queue.reset(); }
  void await(std::latch& done) override {
    while (!done.try_wait()) scheduler.advance(Seconds{0.25});
  }
  ManualScheduler scheduler;
};

struct Kind {
  const char* name;
  std::function<std::unique_ptr<World>()> make;
};

class QueueContract : public testing::TestWithParam<Kind> {
protected:
  std::unique_ptr<World> world = GetParam().make();
  Queue& queue() { return *world->queue; }
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

TEST_P(QueueContract, aTaskKnowsItsQueueAndSyncOnItRunsInlineBeforeWhatWaits) {
  EXPECT_EQ(queue().label(), "Korvell.test");
  EXPECT_FALSE(queue().isCurrent());
  EXPECT_TRUE(syncResult(queue(), [&] { return queue().isCurrent(); }));
  std::vector<int> order;
  world->settle([&] {
    EXPECT_TRUE(queue().isCurrent());
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

TEST_P(QueueContract, aSingleTimerFiresOnceForItsLastSchedule) {
  int fired = 0;
  std::latch first(1), second(2);
  auto timer = queue().timer([&] {
    if (++fired == 1) first.count_down();
    second.count_down();
  });
  world->settle([&] {
    timer->schedule(none, none, Seconds{0.2}); // due at once, but the queue is busy
    timer->schedule(Seconds{0.002}, none, none);
  });
  world->await(first);
  world->settle();
  EXPECT_EQ(fired, 1);
  timer->schedule(Seconds{-5}, none, none);
  world->await(second);
  EXPECT_EQ(fired, 2);
}

TEST_P(QueueContract, nothingFiresAfterCancelOrDestructionOnTheQueue) {
  const auto never = [] { ADD_FAILURE() << "is no longer to fire"; };
  auto cancelled = queue().timer(never), destroyed = queue().timer(never);
  // Both are due at once, and the first one cancels the other.
  int fired = 0;
  std::unique_ptr<Timer> one, other;
  one = queue().timer([&] { ++fired, other->cancel(); });
  other = queue().timer([&] { ++fired, one->cancel(); });
  world->settle([&] {
    for (auto* timer : {&cancelled, &destroyed}) (*timer)->schedule(none, Seconds{0.001}, none);
    for (auto* timer : {&one, &other}) (*timer)->schedule(none, none, none);
    cancelled->cancel();
    destroyed.reset();
  });
  // One that fires after the times at which those would have.
  std::latch later(1);
  auto witness = queue().timer([&] { later.count_down(); });
  witness->schedule(Seconds{0.005}, none, none);
  world->await(later);
  world->settle();
  EXPECT_EQ(fired, 1);
}

TEST_P(QueueContract, aHandlerMayDestroyItsTimer) {
  std::unique_ptr<Timer> timer;
  std::latch done(1);
  timer = queue().timer([&, kept = std::make_shared<int>(7)] {
    timer.reset();
    EXPECT_EQ(*kept, 7); // still there: what the handler holds lives until it returns
    done.count_down();
  });
  timer->schedule(none, Seconds{0.001}, none);
  world->await(done);
  world->settle();
}

TEST_P(QueueContract, aTimerMayOutliveItsQueue) {
  auto timer = queue().timer([] { ADD_FAILURE() << "there is no queue"; });
  world->destroyQueue();
  timer->schedule(none, Seconds{0.001}, none);
  timer->cancel();
}

template <class Made>
std::unique_ptr<World> make() {
  return std::make_unique<Made>();
}
std::unique_ptr<World> threadWorld() {
  return std::make_unique<World>(std::make_unique<ThreadQueue>("Korvell.test"));
}
std::unique_ptr<World> systemWorld() { return std::make_unique<World>(systemQueueFactory()("Korvell.test")); }

INSTANTIATE_TEST_SUITE_P(Kinds, QueueContract,
                         testing::Values(Kind{"Thread", threadWorld}, Kind{"System", systemWorld},
                                         Kind{"Hosted", make<HostedWorld>},
                                         Kind{"Manual", make<ManualWorld>}),
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
