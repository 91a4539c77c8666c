#include "Base/ManualQueue.h"

#include <gmock/gmock.h>
#include <stdexcept>

using namespace korvell;
using testing::ElementsAre;

namespace {

constexpr Seconds none{0};

struct World {
  ManualScheduler time;
  std::unique_ptr<Queue> a = time.makeQueue("a"), b = time.makeQueue("b");
  std::vector<std::string> log;
  /// A task that writes down what happened and in which second.
  Task note(const std::string& what) {
    return
        [this, what] { log.push_back(std::to_string(int(time.clock().monotonic().count())) + " " + what); };
  }
};

} // namespace

TEST(ManualQueue, advanceFiresWhatIsDueOnAllQueuesInTheOrderOfTime) {
  World w;
  auto two = w.a->timer(w.note("two")), three = w.b->timer(w.note("three"));
  two->schedule(none, Seconds{2}, Seconds{1});
  three->schedule(Seconds{3}, none, none);
  w.time.advance(Seconds{4});
  EXPECT_THAT(w.log, ElementsAre("0 two", "2 two", "3 three", "4 two"));
}

TEST(ManualQueue, theBeatStaysThroughFractionsSleepAndAWallClockThatIsSet) {
  World w;
  auto timer = w.a->timer(w.note("fired"));
  timer->schedule(Seconds{2}, Seconds{2}, none);
  w.time.clock().elapse(Seconds{7}); // the machine slept
  w.time.run();
  const Date before = w.time.clock().now();
  w.time.clock().setNow(before - Seconds{86400});
  w.time.advance(Seconds{1});
  EXPECT_THAT(w.log, ElementsAre("7 fired", "8 fired")) << "one firing stands for those that were missed";
  EXPECT_EQ(w.time.clock().now(), before - Seconds{86399});

  int fired = 0;
  auto often = w.b->timer([&] { ++fired; });
  often->schedule(Seconds{0.1}, Seconds{0.1}, none);
  for (int i = 0; i < 10; ++i) w.time.advance(Seconds{1});
  EXPECT_EQ(fired, 100);
}

TEST(ManualQueue, tasksWaitForTheTestAndHandOverBetweenQueues) {
  World w;
  w.a->async([&] {
    w.note("a")();
    w.b->async(w.note("b, handed over"));
    // Comes after what was added before; a queue that would wait for the one that waits for it is found out.
    w.b->sync([&] {
      w.note("b")();
      EXPECT_THROW(w.a->sync([] {}), std::logic_error);
    });
    w.a->async(w.note("never"));
    w.a.reset(); // while it runs
    w.b->async(w.note("after"));
  });
  EXPECT_TRUE(w.log.empty());
  w.time.run();
  EXPECT_THAT(w.log, ElementsAre("0 a", "0 b, handed over", "0 b", "0 after"));
}

TEST(QueueCore, theDeadlineLeavesNoTimerLaterThanItsLeewayAllows) {
  auto clock = std::make_shared<ManualClock>();
  int changes = 0;
  auto core = std::make_shared<QueueCore>(clock, [&] { ++changes; });
  EXPECT_FALSE(core->deadline());
  auto patient = core->makeTimer([] {}), strict = core->makeTimer([] {});
  patient->schedule(Seconds{10}, none, Seconds{2});
  EXPECT_EQ(changes, 1);
  EXPECT_EQ(core->deadline()->leeway, Seconds{2});
  strict->schedule(Seconds{11}, none, Seconds{0.5});
  EXPECT_EQ(core->deadline()->due, Seconds{10});
  EXPECT_EQ(core->deadline()->leeway, Seconds{1.5});
  clock->elapse(Seconds{10});
  EXPECT_EQ(core->waiting(), 1u);
  EXPECT_EQ(core->deadline()->due, Seconds{10}) << "a firing that was taken up and not yet run is due now";
}
