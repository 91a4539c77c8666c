#include "LoopFixture.h"

namespace korvell {
namespace {

using testing::ElementsAre;

struct SamplerTests : LoopFixture {
  const Date start = time.clock().now();
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};
  const std::unique_ptr<Sampler> owned = makeSampler(history);
  Sampler& sampler = *owned;

  SamplerTests() : LoopFixture({1'772'370'120}) {} // two minutes past an hour
  /// A cycle ten seconds after the last one, in which the disk wrote a megabyte and a core was half busy.
  Tick cycle() {
    time.clock().elapse(Seconds{10});
    machine.diskCounters[1].out += 1'000'000;
    machine.cpuCounters.cores[0].user += 50;
    machine.cpuCounters.cores[0].idle += 50;
    return syncResult(sampler.queue(), [&] { return sampler.tick(); });
  }
  /// Which of the next cycles, from 1 on, filled this part of their ticks.
  template <class Part>
  std::vector<int> cyclesWith(std::optional<Part> Tick::*part, int count) {
    std::vector<int> found;
    for (int i = 1; i <= count; ++i)
      if (cycle().*part) found.push_back(i);
    return found;
  }
};

TEST_F(SamplerTests, theHistoryIsOfAllCyclesButTheFirst) {
  std::vector<double> averages;
  sampler.setLastScore(70);
  for (int i = 0; i < 49; ++i) {
    const auto tick = cycle();
    averages.push_back(tick.cpuTenMinuteAverage);
    EXPECT_EQ(tick.known.has(KnownPart::tenMinuteAverage), i >= 47) << i;
  }
  EXPECT_EQ(averages[46], 0) << "the eighth minute is stored when the ninth begins";
  EXPECT_DOUBLE_EQ(averages[47], 50);
  const auto minute = history.minute(start);
  ASSERT_TRUE(minute);
  EXPECT_EQ(minute->score, 70);
  EXPECT_DOUBLE_EQ(minute->system[diskWriteColumn], 100'000) << "the first cycle knows no rate";
}

TEST_F(SamplerTests, totalsComeOnceAMinuteAndTodayBeginsAtLocalMidnight) {
  EXPECT_THAT(cyclesWith(&Tick::totals, 20), ElementsAre(2, 8, 14, 20));
  time.clock().elapse(Seconds{300});
  EXPECT_DOUBLE_EQ(cycle().totals->diskWrittenToday, 4 * 60 * 100'000);
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
  EXPECT_EQ(first.projects->at(0).name, "shop");
  EXPECT_THAT(first.snapshot.apps.at(0).processes.at(0).ports, ElementsAre());
  sampler.setWatched(false);
  const Tick second = cycle();
  EXPECT_FALSE(second.projects);
  EXPECT_THAT(second.snapshot.apps.at(0).processes.at(0).ports, ElementsAre(3000));
  EXPECT_THAT(cyclesWith(&Tick::projects, 6), ElementsAre(2, 5));
  time.clock().setNow(start - Seconds{1e6});
  EXPECT_TRUE(cycle().projects) << "the clock was set back: due at once";
}

TEST_F(SamplerTests, sensorsAndPeripheralsAreReadOnTheirOwnClocks) {
  chips->chips = {{"coretemp", "", {{1, "Package id 0", 71.0}}, {}}};
  peripherals.devices = {{"Desk Mouse", 61, PeripheralType::mouse}};
  const Tick first = cycle();
  ASSERT_TRUE(first.sensors && first.peripherals);
  EXPECT_EQ(first.sensors->cpuCelsius, 71);
  EXPECT_THAT(*first.peripherals,
              ElementsAre(PeripheralBattery{"Desk Mouse", 61, PeripheralBattery::Kind::mouse}));
  EXPECT_THAT(cyclesWith(&Tick::sensors, 3), ElementsAre(1, 2, 3));
  EXPECT_THAT(cyclesWith(&Tick::peripherals, 24), ElementsAre(9, 21));
  sampler.setWatched(false);
  EXPECT_THAT(cyclesWith(&Tick::sensors, 6), ElementsAre(3, 6));
  EXPECT_THAT(cyclesWith(&Tick::peripherals, 120), ElementsAre(51, 111));
}

TEST_F(SamplerTests, startupItemsAreScannedEveryHalfHourAtAnyPace) {
  launchItems.addUnit(LaunchScope::user, "/u/gone.service", "/opt/gone");
  const Tick first = cycle();
  ASSERT_TRUE(first.startupItems);
  EXPECT_TRUE(first.startupItems->at(0).isLeftover);
  sampler.setWatched(false);
  EXPECT_THAT(cyclesWith(&Tick::startupItems, 400), ElementsAre(180, 360));
  launchItems.existing.insert("/opt/gone"); // installed again
  const Tick last = cycle();
  ASSERT_TRUE(last.startupItems) << "no scan is due, but the program has come";
  EXPECT_FALSE(last.startupItems->at(0).isLeftover);
}

} // namespace
} // namespace korvell
