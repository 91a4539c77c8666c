#include "Core/Loop/Sampler.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

class OneOwner final : public OwnerRules {
public:
  OwnerDecision owner(ProcessID, const ProcessFacts&, ProcessLookup&) override { return {owner_, "all"}; }
  SystemGroup systemGroup() const override { return linuxSystemGroup; }

private:
  std::shared_ptr<Owner> owner_ = std::make_shared<Owner>(Owner{"app", "App", {}});
};

struct SamplerTests : testing::Test {
  const Date start{1'772'370'120}; // two minutes past an hour
  ManualScheduler time{start};
  FakeMachineCounters machine;
  FakeProcessTable table;
  FakeRunningApplications applications;
  OneOwner owners;
  FakeTimeZone zone;
  FakeLaunchItems launchItems;
  TemporaryFolder folder;
  std::unique_ptr<HistoryStore> store = openHistory();
  HistoryStore& history = *store;
  Sampler sampler{time.makeQueue(Sampler::queueLabel), machine, subjects()};

  std::unique_ptr<HistoryStore> openHistory(HistoryAccess access = HistoryAccess::keeper) {
    return std::make_unique<HistoryStore>(time.factory(), time.clock(), folder.path().string(), access);
  }
  Sampler::Subjects subjects() {
    Sampler::Subjects subjects;
    subjects.processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, 4);
    subjects.devServers = std::make_unique<DevServerScanner>(
        table, linuxDevServerTables, "/home/u", [](const std::string&) { return false; }, time.clock());
    subjects.history = &history;
    subjects.zone = &zone;
    subjects.launchItems = &launchItems;
    return subjects;
  }
  /// A cycle ten seconds after the last one, in which the disk wrote `written` bytes and a core was half
  /// busy.
  Tick cycle(std::uint64_t written = 0) {
    time.clock().elapse(Seconds{10});
    machine.diskCounters[1].out += written;
    machine.cpuCounters.cores[0].user += 50;
    machine.cpuCounters.cores[0].idle += 50;
    return syncResult(sampler.queue(), [&] { return sampler.tick(); });
  }
};

TEST_F(SamplerTests, theFirstCycleIsNotRecordedLaterOnesAreWithTheLastScore) {
  const Tick first = cycle(5'000'000);
  EXPECT_EQ(first.totals, std::nullopt);
  sampler.setLastScore(70);
  cycle(1'000'000); // 100 kB/s
  history.close();
  const auto minute = openHistory(HistoryAccess::reader)->minute(time.clock().now());
  ASSERT_TRUE(minute);
  EXPECT_EQ(minute->score, 70);
  EXPECT_DOUBLE_EQ(minute->system[diskWriteColumn], 100'000); // the mean of one sample
}

TEST_F(SamplerTests, theTenMinuteAverageNeedsEightMinutes) {
  double last = 0;
  int cycles = 0;
  while (last == 0 && cycles < 100) {
    last = cycle().cpuTenMinuteAverage;
    ++cycles;
  }
  // Recorded from the second cycle on; the eighth minute is stored when the ninth begins.
  EXPECT_EQ(cycles, 8 * 6);
  EXPECT_DOUBLE_EQ(last, 50);
}

TEST_F(SamplerTests, totalsComeOnceAMinuteAndTodayBeginsAtLocalMidnight) {
  std::vector<int> withTotals;
  for (int i = 0; i < 20; ++i)
    if (cycle(1'000'000).totals) withTotals.push_back(i);
  EXPECT_EQ(withTotals, (std::vector{1, 7, 13, 19}));

  time.clock().elapse(Seconds{300});
  const Totals before = *cycle().totals;
  EXPECT_DOUBLE_EQ(before.diskWrittenToday, 3 * 60 * 100'000 + 2 * 60 * 50'000);
  // A zone in which the day has just begun.
  zone.move(int(86'400 - std::int64_t(time.clock().now().sinceEpoch) % 86'400));
  time.clock().elapse(Seconds{60});
  EXPECT_EQ(cycle().totals->diskWrittenToday, 0);
}

TEST_F(SamplerTests, developmentServersAreScannedOnTheirOwnClock) {
  table.add(10, "node").directory = "/home/u/shop";
  table.ports[10] = {3000};
  const Tick first = cycle();
  ASSERT_TRUE(first.projects);
  ASSERT_EQ(first.projects->size(), 1u);
  EXPECT_EQ(first.projects->at(0).name, "shop");
  EXPECT_TRUE(first.snapshot.apps.at(0).processes.at(0).ports.empty());
  EXPECT_EQ(cycle().snapshot.apps.at(0).processes.at(0).ports, std::vector{3000});

  sampler.setWatched(false);
  std::vector<int> scans;
  for (int i = 2; i < 10; ++i)
    if (cycle().projects) scans.push_back(i);
  EXPECT_EQ(scans, (std::vector{4, 7}));
  time.clock().setNow(start - Seconds{1e6}); // set back: due at once
  EXPECT_TRUE(cycle().projects);
}

TEST_F(SamplerTests, startupItemsAreScannedEveryHalfHourAtAnyPace) {
  launchItems.launchFiles = {
      {LaunchScope::user, LaunchFormat::systemdService, "/u/gone.service", "[Service]\nExecStart=/opt/gone"}};
  const Tick first = cycle();
  ASSERT_TRUE(first.startupItems);
  ASSERT_EQ(first.startupItems->size(), 1u);
  EXPECT_TRUE(first.startupItems->front().isLeftover);
  sampler.setWatched(false);
  std::vector<int> scans;
  for (int i = 1; i <= 400; ++i)
    if (cycle().startupItems) scans.push_back(i);
  EXPECT_EQ(scans, (std::vector{180, 360}));
  launchItems.existing.insert("/opt/gone"); // installed again
  const Tick last = cycle();
  ASSERT_TRUE(last.startupItems) << "no scan is due, but the program has come";
  EXPECT_FALSE(last.startupItems->front().isLeftover);
}

} // namespace
} // namespace korvell
