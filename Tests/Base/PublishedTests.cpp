#include "Base/ManualQueue.h"
#include "Base/Published.h"

#include <gmock/gmock.h>
#include <string>

using namespace korvell;
using testing::ElementsAre;

namespace {

struct World {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  Published<int> value{*main, 1};
  std::vector<std::string> calls;
  Subscription note(const std::string& name) {
    return value.observe([this, name](int seen) {
      EXPECT_EQ(value.get(), seen) << "the new value is in place";
      calls.push_back(name + std::to_string(seen));
    });
  }
};

} // namespace

TEST(Published, tellsItsObserversInTheirOrderWhileTheyLive) {
  World w;
  auto a = w.note("a"), b = w.note("b");
  w.value.set(2);
  a.reset();
  w.value.set(2);
  w.value.setIfChanged(2);
  w.value.setIfChanged(3);
  EXPECT_THAT(w.calls, ElementsAre("a2", "b2", "b2", "b3"));
}

TEST(Published, observersComeAndGoInsideACall) {
  World w;
  Subscription late, self, other;
  self = w.value.observe([&](int) {
    w.calls.push_back("self");
    other.reset();
    late = w.note("late");
    self.reset(); // its own function still runs to its end
    w.calls.push_back("end");
  });
  other = w.note("other");
  w.value.set(2);
  EXPECT_THAT(w.calls, ElementsAre("self", "end")) << "who left is not called, who came waits for the next";
  w.value.set(3);
  EXPECT_THAT(w.calls, ElementsAre("self", "end", "late3"));
}

TEST(Published, valuesThatBelongTogetherAreAllInPlaceBeforeAnybodyIsTold) {
  World w;
  Published<int> other{*w.main};
  auto first = w.value.observe([&](int seen) { w.calls.push_back(std::to_string(seen + *other)); });
  auto second = other.observe([&](int) { w.calls.push_back("other"); });
  {
    Publication publication;
    publication.set(w.value, 2);
    publication.setIfChanged(w.value, 2);
    publication.set(other, 10);
    EXPECT_TRUE(w.calls.empty());
  }
  EXPECT_THAT(w.calls, ElementsAre("12", "other"));
}

TEST(Published, anObserverMaySetTheValueAgain) {
  World w;
  auto clamp = w.value.observe([&](int seen) {
    if (seen > 9) w.value.set(9);
  });
  auto last = w.note("last");
  w.value.set(20);
  EXPECT_EQ(w.value.get(), 9);
  EXPECT_EQ(w.calls.back(), "last9") << "nobody is left with the older value";
}

TEST(Published, whoHasGoneTakesNoRoomThoughNothingIsEverTold) {
  Observers<int> observers;
  int told = 0;
  const auto staying = observers.add([&](int) { ++told; });
  for (int i = 0; i < 1'000; ++i) (void)observers.add([](int) {});
  EXPECT_LE(observers.size(), 4u);
  observers.tell(1);
  EXPECT_EQ(told, 1);
}
