#include "Core/Machine/SystemSampler.h"
#include "Tests/Contracts/MachineCountersContract.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeMachineCounters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t top32 = 0xffff'ffff;

struct CPURow {
  const char* name;
  CPUCounters previous, now;
  double user, system;
  std::vector<double> perCore;
};

TEST(SystemSamplerTests, sharesAreWhatTheTicksAdvanced) {
  using enum TickWidth;
  const CPURow rows[] = {
      {"nice counts as user", {{}, {{0, {10, 10, 100, 0}}}}, {{}, {{0, {20, 30, 160, 10}}}}, 20, 20, {40}},
      {"shares are over all cores' ticks, not a mean of shares",
       {{}, {{0, {}}, {1, {}}}},
       {{}, {{0, {300, 0, 0, 0}}, {1, {0, 0, 100, 0}}}},
       75,
       0,
       {100, 0}},
      {"32-bit counters wrap",
       {{}, {{0, {top32 - 9, top32 - 4, top32, 0}}}, wraps32},
       {{}, {{0, {10, 5, 69, 0}}}, wraps32},
       20,
       10,
       {30}},
      {"a 64-bit counter that steps back did not advance, the others count",
       {{}, {{0, {100, 100, 500, 0}}}},
       {{}, {{0, {110, 100, 480, 0}}}},
       100,
       0,
       {100}},
      {"a core without any tick is idle", {{}, {{0, {5, 5, 5, 5}}}}, {{}, {{0, {5, 5, 5, 5}}}}, 0, 0, {0}},
      {"no previous reading", {}, {{}, {{0, {5, 5, 5, 5}}}}, 0, 0, {}},
      {"a core went offline", {{}, {{0, {}}, {1, {}}}}, {{}, {{0, {9, 9, 9, 9}}}}, 0, 0, {}},
      {"another core of as many", {{}, {{0, {}}, {1, {}}}}, {{}, {{0, {9}}, {2, {9}}}}, 0, 0, {}},
      {"a gap in the numbers stays one core each",
       {{}, {{0, {}}, {2, {}}}},
       {{}, {{0, {0, 0, 10, 0}}, {2, {10, 0, 0, 0}}}},
       50,
       0,
       {0, 100}},
      {"the reading failed", {{}, {{0, {1, 1, 1, 1}}}}, {}, 0, 0, {}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const auto stats = cpuStats(row.previous, row.now, {.performanceCores = 4, .efficiencyCores = 2});
    EXPECT_DOUBLE_EQ(stats.user, row.user);
    EXPECT_DOUBLE_EQ(stats.system, row.system);
    EXPECT_DOUBLE_EQ(stats.total, row.user + row.system);
    EXPECT_EQ(stats.perCore, row.perCore);
    EXPECT_EQ(stats.performanceCores, 4);
    EXPECT_EQ(stats.efficiencyCores, 2);
  }
}

TEST(SystemSamplerTests, freeMemoryIsWhatTheOthersLeave) {
  MemoryCounters counters{1000, MemoryUse{100, 200, 300, 50, 7, PressureLevel::critical}};
  auto stats = memoryStats(counters);
  EXPECT_EQ(stats.free, 350u);
  EXPECT_EQ(stats.swapUsed, 7u);
  EXPECT_EQ(stats.pressure, MemoryStats::Pressure::critical);
  counters.use->cached = 900;
  EXPECT_EQ(memoryStats(counters).free, 0u);
  EXPECT_EQ(memoryStats({1000, std::nullopt}), MemoryStats{.total = 1000});
}

class SystemSamplerCycleTests : public testing::Test {
protected:
  FakeMachineCounters machine;
  FakeClock clock;

  SystemSnapshot sample(SystemSampler& sampler) {
    SystemSnapshot snapshot;
    sampler.sample(snapshot);
    return snapshot;
  }
};

TEST_F(SystemSamplerCycleTests, ratesComeWithTheSecondCycleOverMonotonicTime) {
  SystemSampler sampler(machine, clock);
  machine.diskCounters = {{1, {1000, 500}}};
  machine.interfaceCounters = {{"eth0", "Ethernet", {100, 200}}};
  const auto first = sample(sampler);
  EXPECT_EQ(first.disk.readRate + first.disk.writeRate + first.network.inRate + first.network.outRate, 0);
  EXPECT_EQ(first.network.totalOut, 200u);

  clock.advance(Seconds{2});
  clock.wall = Date{0}; // somebody set the wall clock back
  machine.diskCounters = {{1, {5000, 400}}, {2, {999, 999}}};
  machine.interfaceCounters = {{"eth0", "Ethernet", {300, 100}}, {"usb0", "", {50, 50}}};
  const auto second = sample(sampler);
  EXPECT_DOUBLE_EQ(second.disk.readRate, 2000); // the new disk contributes nothing yet
  EXPECT_DOUBLE_EQ(second.disk.writeRate, 0);   // the counter went backwards
  EXPECT_DOUBLE_EQ(second.network.inRate, 100);
  EXPECT_DOUBLE_EQ(second.network.outRate, 0);
  EXPECT_EQ(second.network.totalIn, 350u);

  clock.advance(Seconds{4});
  machine.diskCounters = {{2, {1999, 4999}}};
  const auto third = sample(sampler);
  EXPECT_DOUBLE_EQ(third.disk.readRate, 250);
  EXPECT_DOUBLE_EQ(third.disk.writeRate, 1000);
}

TEST_F(SystemSamplerCycleTests, volumesAreKeptForThirtySecondsUnlessThereAreNone) {
  SystemSampler sampler(machine, clock);
  EXPECT_THAT(sample(sampler).disk.volumes, IsEmpty());
  machine.mountedVolumes = {
      {"", "/", 100, 40}, {"", "/media/me/STICK/", 50, 0}, {"Data", "/data", 9, 9}, {"", "/empty", 0, 0}};
  const std::vector<VolumeInfo> expected{
      {"System disk", "/", 100, 40}, {"STICK", "/media/me/STICK/", 50, 0}, {"Data", "/data", 9, 9}};
  EXPECT_EQ(sample(sampler).disk.volumes, expected);
  machine.mountedVolumes.clear();
  clock.advance(Seconds{30});
  EXPECT_EQ(sample(sampler).disk.volumes, expected);
  EXPECT_EQ(machine.volumeRequests, 2);
  clock.advance(Seconds{1});
  EXPECT_THAT(sample(sampler).disk.volumes, IsEmpty());
}

TEST(SystemSamplerTests, thePrimaryInterfaceMovedTheMost) {
  struct Row {
    std::vector<InterfaceCounters> interfaces;
    const char* text;
  };
  const Row rows[] = {
      {{}, "–"},
      {{{"en0", "Wi-Fi", {0, 0}}}, "Wi-Fi · en0"},
      {{{"en0", "Wi-Fi", {5, 5}}, {"en1", "Ethernet", {2, 8}}}, "Wi-Fi · en0"},
      {{{"en0", "Wi-Fi", {5, 5}}, {"en5", "", {2, 9}}, {"en6", "", {1, 1}}}, "en5"},
  };
  for (const auto& row : rows) EXPECT_EQ(networkStats({}, row.interfaces, Seconds{1}).interface, row.text);
}

TEST(SystemSamplerTests, graphicsShowTheBusiestAndAllTheirMemory) {
  EXPECT_EQ(gpuStats({}, {{30, 100}, {70, 20}, {0, 1}}, {.graphicsName = "Apple M9"}, Seconds{1}),
            (GPUStats{"Apple M9", 70, 121}));
  const std::map<std::string, std::uint64_t> previous = {
      {"a render", 1'000'000'000}, {"a copy", 9}, {"b x", 5}};
  const std::vector<GPUCounters> now = {
      {0, 7, {{"a render", 1'500'000'000}, {"a copy", 100'000'009}, {"a new", 9'000'000'000}}},
      {0, 0, {{"b x", 0}}}};
  for (const auto& [seconds, share] : {std::pair(2.0, 25.0), std::pair(0.0, 0.0), std::pair(0.1, 100.0)})
    EXPECT_DOUBLE_EQ(gpuStats(previous, now, {}, Seconds{seconds}).utilization, share) << seconds;
}

TEST(SystemSamplerTests, packageCountersWrapAtTheirRange) {
  struct Row {
    const char* name;
    std::map<int, EnergyCounter> previous, now;
    double watts;
  };
  const Row rows[] = {
      {"two packages", {{0, {0, 9000000}}, {1, {5, 0}}}, {{0, {4000000, 9000000}}, {1, {2000005, 0}}}, 3},
      {"wrapped", {{0, {8000000, 9000000}}}, {{0, {1000000, 9000000}}}, 1},
      {"went back, range unknown", {{0, {8000000, 0}}}, {{0, {1000000, 0}}}, 0},
      {"new", {}, {{0, {4000000, 9000000}}}, 0},
  };
  for (const auto& row : rows)
    EXPECT_THAT(packageWatts(row.previous, row.now, Seconds{2}), DoubleNear(row.watts, 1e-9)) << row.name;
  EXPECT_EQ(packageWatts(rows[0].previous, rows[0].now, Seconds{0}), 0);
}

TEST(SystemSamplerTests, batteryFiguresStayInTheirBounds) {
  struct Row {
    BatteryReading reading;
    std::optional<int> minutes;
    double health = 0;
    int percent = 0;
  };
  const Row rows[] = {{{.externalConnected = false, .minutesRemaining = 1}, 1},
                      {{.externalConnected = false, .minutesRemaining = 65534}, 65534},
                      {{.externalConnected = false, .minutesRemaining = 65535}, {}},
                      {{.externalConnected = false, .minutesRemaining = 0}, {}},
                      {{.externalConnected = false}, {}},
                      {{.externalConnected = true, .minutesRemaining = 161}, {}},
                      {{.minutesRemaining = 161}, {}},
                      {{.percent = 61, .fullCapacity = 41, .designCapacity = 50}, {}, 82, 61},
                      {{.percent = 104, .fullCapacity = 60, .designCapacity = 50}, {}, 100, 100},
                      {{.fullCapacity = 41}, {}},
                      {{.percent = -3, .designCapacity = 50}, {}}};
  for (const auto& row : rows) {
    const auto stats = batteryStats({.battery = row.reading}, 0);
    SCOPED_TRACE(&row - rows);
    EXPECT_EQ(stats.minutesRemaining, row.minutes);
    EXPECT_EQ(stats.onAC, row.reading.externalConnected.value_or(true));
    EXPECT_DOUBLE_EQ(stats.health, row.health);
    EXPECT_EQ(stats.percent, row.percent);
  }
}

TEST(SystemSamplerTests, powerComesFromTheBestSourceThatSpeaks) {
  const BatteryReading silent{.present = true, .externalConnected = true};
  const BatteryReading draining{.present = true, .systemWatts = 10.6};
  EXPECT_EQ(batteryStats({.adapterWatts = 96}, 20), (BatteryStats{.onAC = true, .systemPower = 96}));
  EXPECT_EQ(batteryStats({}, 20).systemPower, 20);
  EXPECT_EQ(batteryStats({.battery = draining}, 20).systemPower, 10.6);
  EXPECT_EQ(batteryStats({.battery = silent}, 20).systemPower, 20);
  EXPECT_EQ(batteryStats({.battery = silent}, 0).systemPower, 0);
}

TEST_F(SystemSamplerCycleTests, theFakeKeepsTheContract) {
  machine = FakeMachineCounters::portable();
  expectMachineContract(machine);
}

TEST_F(SystemSamplerCycleTests, everyRecordIsFilledAndTheRestLeftAlone) {
  machine.machineFacts = {.chipName = "Chip", .graphicsName = "Card", .performanceCores = 2};
  machine.cpuCounters = {1.5, {{0, {}}}};
  machine.gpuCounters = {{0, 0, {{"render", 0}}}};
  machine.powerReading.packages = {{0, {0, 0}}};
  SystemSampler sampler(machine, clock);
  sample(sampler);
  clock.advance(Seconds{2});
  machine.cpuCounters.cores = {{0, {1, 1, 2, 0}}};
  machine.memoryCounters = {10, MemoryUse{}};
  machine.gpuCounters = {{5, 6}, {0, 0, {{"render", 400'000'000}}}};
  machine.powerReading.packages = {{0, {30'000'000, 0}}};
  SystemSnapshot snapshot;
  snapshot.date = Date{7};
  snapshot.apps = {{.id = "kept"}};
  sampler.sample(snapshot);
  EXPECT_EQ(snapshot.date, Date{7});
  EXPECT_EQ(snapshot.apps.size(), 1u);
  EXPECT_EQ(snapshot.cpu.load1, 1.5);
  EXPECT_THAT(snapshot.cpu.perCore, ElementsAre(50));
  EXPECT_EQ(snapshot.memory.free, 10u);
  EXPECT_EQ(snapshot.gpu, (GPUStats{"Card", 20, 6}));
  EXPECT_DOUBLE_EQ(snapshot.battery.systemPower, 15);
}

} // namespace
} // namespace korvell
