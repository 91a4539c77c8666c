#include "Base/StallWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace korvell;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct Paint {};
struct Query {};

std::string numbered(int number) { return std::to_string(number); }

class StallWatchTest : public testing::Test {
protected:
  void compute(int milliseconds) { times.computing += Seconds{milliseconds / 1e3}; }
  void wait(int milliseconds) { times.waiting += Seconds{milliseconds / 1e3}; }

  ThreadMeter::Times times;
  bool isBusy = false;
  std::vector<StallWatch::Stall> told;
  StallWatch watch{Seconds{0.016},
                   {.times = [this] { return times; },
                    .isMachineBusy = [this] { return isBusy; },
                    .tell = [this](const StallWatch::Stall& stall) { told.push_back(stall); }}};
};

TEST_F(StallWatchTest, tellsWhoHeldTheThreadForTooLong) {
  {
    const StallWatch::Scope event(watch, typeid(Paint), numbered, 7);
    compute(3);
    {
      const StallWatch::Scope swift(watch, typeid(Paint));
      compute(4);
    }
    const StallWatch::Scope slow(watch, typeid(Query));
    compute(10);
    wait(2);
  }
  {
    const StallWatch::Scope next(watch, typeid(Paint));
    compute(16); // the limit itself
  }
  ASSERT_EQ(told.size(), 1u);
  EXPECT_NEAR(told[0].computing.count(), 0.017, 1e-9);
  EXPECT_NEAR(told[0].waiting.count(), 0.002, 1e-9);
  EXPECT_THAT(told[0].path, ElementsAre(HasSubstr("Paint 7"), HasSubstr("Query")));
  EXPECT_EQ(watch.stalls(), 1);
}

TEST_F(StallWatchTest, waitingCountsUnlessTheMachineIsShortOfProcessors) {
  const auto run = [this](int computed, int waited) {
    const StallWatch::Scope event(watch, typeid(Paint));
    compute(computed);
    wait(waited);
  };
  run(10, 10);
  EXPECT_EQ(watch.stalls(), 1);
  isBusy = true;
  run(10, 500);
  EXPECT_EQ(watch.stalls(), 1);
  run(17, 0);
  EXPECT_EQ(watch.stalls(), 2);
}

TEST_F(StallWatchTest, aMenuThatIsOpenHoldsNothing) {
  {
    const StallWatch::Scope click(watch, typeid(Paint));
    compute(20);
    watch.willSleep();
    wait(5000);
    watch.awoke();
    {
      const StallWatch::Scope inside(watch, typeid(Query));
      compute(15);
    }
    watch.willSleep();
    wait(5000);
    watch.awoke();
    compute(5);
  }
  EXPECT_EQ(watch.stalls(), 1);
  watch.willSleep();
  watch.awoke();
  EXPECT_EQ(watch.stalls(), 1);
}

} // namespace
