#include "Platform/Formats/EnergyCounters.h"
#include "Platform/Formats/SleepingMemory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(EnergySharesTests, energyGoesByCPUTime) {
  const std::uint64_t times[] = {300, 0, 100};
  EXPECT_THAT(energyShares(4'000'000, times), ElementsAre(3'000'000, 0, 1'000'000));
  EXPECT_THAT(energyShares(10, std::vector<std::uint64_t>{1, 1, 1}), ElementsAre(3, 3, 3));
  EXPECT_THAT(energyShares(4000, std::vector<std::uint64_t>{0, 0}), ElementsAre(0, 0));
  EXPECT_THAT(energyShares(4000, {}), IsEmpty());
}

struct SleepingMemoryTests : testing::Test {
  SleepingMemory memory;
  std::vector<ProcessCounters> processes = [] {
    std::vector<ProcessCounters> list;
    for (ProcessID pid = 10; pid <= 60; pid += 10) list.push_back({.pid = pid, .footprint = 1000});
    return list;
  }();
  SleepingMemory::Machine machine = AnonymousMemory{.resident = 90'000, .swapped = 10'000};

  /// The ids whose turn it is; their new footprints are taken as they stand.
  std::vector<ProcessID> cycle(double seconds) {
    std::vector<ProcessID> ids;
    for (const auto i : memory.due(processes, machine, Seconds{seconds})) ids.push_back(processes[i].pid);
    memory.settle(processes, machine);
    return ids;
  }
};

TEST_F(SleepingMemoryTests, everyoneHasATurnInTwentySeconds) {
  EXPECT_THAT(cycle(0), IsEmpty()) << "all have just been read";
  EXPECT_THAT(cycle(10), ElementsAre(10, 20, 30));
  processes.erase(processes.begin() + 2); // who had the last turn is gone
  EXPECT_THAT(cycle(2), ElementsAre(40));
  EXPECT_THAT(cycle(10), ElementsAre(50, 60, 10)) << "it comes round, rounded up";
  EXPECT_THAT(cycle(1000), SizeIs(5)) << "nobody twice";
  processes.clear();
  EXPECT_THAT(cycle(10), IsEmpty());
}

TEST_F(SleepingMemoryTests, unexplainedMemoryHasAllReadOnce) {
  cycle(0);
  machine->resident += 1000;
  EXPECT_THAT(cycle(2), SizeIs(1)) << "one percent is not more than one percent";
  machine->swapped += 100;
  EXPECT_THAT(cycle(2), SizeIs(6));
  EXPECT_THAT(cycle(2), SizeIs(1)) << "that is known by now";
  machine->resident += 50'000;
  processes[0].footprint += 50'000; // it ran
  EXPECT_THAT(cycle(2), SizeIs(1)) << "explained";
  processes[0].footprint -= 50'000;
  EXPECT_THAT(cycle(2), SizeIs(6)) << "less than before is a change too";
  machine.reset();
  EXPECT_THAT(cycle(2), SizeIs(1)) << "unread: the rotation alone";
}

} // namespace
} // namespace korvell
