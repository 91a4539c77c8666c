#include "Core/Machine/SystemSampler.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeMachineCounters.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint64_t top32 = 0xffff'ffff;

TEST(SystemSamplerTests, sharesAreWhatTheTicksAdvanced) {
  using enum TickWidth;
  using Cores = decltype(CPUCounters::cores);
  const struct {
    const char* name;
    Cores previous, now;        ///< user, nice, system and idle ticks
    std::vector<double> shares; ///< of all, by users, by the system
    std::vector<double> perCore;
    TickWidth width = CPUCounters().width;
  } rows[] = {
      {"nice counts as user", {{0, {10, 10, 100, 0}}}, {{0, {20, 30, 160, 10}}}, {40, 20, 20}, {40}},
      {"over all cores' ticks, a gap in the numbers stays one core each",
       {{0, {}}, {2, {}}},
       {{0, {300, 0, 0, 0}}, {2, {0, 0, 100, 0}}},
       {75, 75, 0},
       {100, 0}},
      {"32-bit counters wrap",
       {{0, {top32 - 9, top32 - 4, top32, 0}}},
       {{0, {10, 5, 69, 0}}},
       {30, 20, 10},
       {30},
       wraps32},
      {"a 64-bit counter that steps back did not advance, the others count",
       {{0, {100, 100, 500, 0}}},
       {{0, {110, 100, 480, 0}}},
       {100, 100, 0},
       {100}},
      {"a core without any tick is idle", {{0, {5, 5, 5, 5}}}, {{0, {5, 5, 5, 5}}}, {0, 0, 0}, {0}},
      {"a core went offline", {{0, {}}, {1, {}}}, {{0, {9, 9, 9, 9}}}, {0, 0, 0}, {}},
      {"another core of as many", {{0, {}}, {1, {}}}, {{0, {9}}, {2, {9}}}, {0, 0, 0}, {}},
  };
  for (const auto& row : rows) {
    const auto stats = cpuStats({{}, row.previous, row.width}, {{}, row.now, row.width}, {});
    EXPECT_EQ((std::vector{stats.total, stats.user, stats.system}), row.shares) << row.name;
    EXPECT_EQ(stats.perCore, row.perCore) << row.name;
  }
}

TEST(SystemSamplerTests, freeMemoryIsWhatTheOthersLeave) {
  MemoryCounters counters{1000, MemoryUse{100, 200, 300, 50, 7, PressureLevel::critical}};
  EXPECT_EQ(memoryStats(counters),
            (MemoryStats{1000, 100, 200, 300, 50, 350, 7, MemoryStats::Pressure::critical}));
  counters.use->cached = 900;
  EXPECT_EQ(memoryStats(counters).free, 0u);
  EXPECT_EQ(memoryStats({1000, std::nullopt}), MemoryStats{.total = 1000});
}

TEST(SystemSamplerTests, thePrimaryInterfaceMovedTheMost) {
  const std::pair<std::vector<InterfaceCounters>, const char*> rows[] = {
      {{}, "–"},
      {{{"en0", "Wi-Fi", {5, 5}}, {"en1", "Ethernet", {2, 8}}}, "Wi-Fi · en0"},
      {{{"en0", "Wi-Fi", {5, 5}}, {"en5", "", {2, 9}}, {"en6", "", {1, 1}}}, "en5"},
  };
  for (const auto& [interfaces, text] : rows)
    EXPECT_EQ(networkStats({}, interfaces, Seconds{1}).interface, text);
}

TEST(SystemSamplerTests, graphicsShowTheBusiestEngine) {
  const std::map<std::string, std::uint64_t> previous = {{"render", 1'000'000'000}, {"copy", 9}, {"x", 5}};
  const std::vector<GPUCounters> now = {
      {{}, 7, {{"render", 1'500'000'000}, {"copy", 100'000'009}, {"new", 9'000'000'000}}},
      {{}, 0, {{"x", 0}}}};
  for (const auto& [seconds, share] : {std::pair(2.0, 25.0), std::pair(0.0, 0.0), std::pair(0.1, 100.0)})
    EXPECT_DOUBLE_EQ(gpuStats(previous, now, {}, Seconds{seconds}).utilization, share) << seconds;
}

TEST(SystemSamplerTests, packageCountersWrapAtTheirRange) {
  const struct {
    const char* name;
    std::map<int, EnergyCounter> previous, now;
    double watts;
  } rows[] = {{"two packages", {{0, {0, 0}}, {1, {5, 0}}}, {{0, {4'000'000, 0}}, {1, {2'000'005, 0}}}, 3},
              {"wrapped", {{0, {8'000'000, 9'000'000}}}, {{0, {1'000'000, 9'000'000}}}, 1},
              {"went back, range unknown", {{0, {8'000'000, 0}}}, {{0, {1'000'000, 0}}}, 0},
              {"new", {}, {{0, {4'000'000, 9'000'000}}}, 0}};
  for (const auto& row : rows)
    EXPECT_DOUBLE_EQ(packageWatts(row.previous, row.now, Seconds{2}), row.watts) << row.name;
}

TEST(SystemSamplerTests, batteryFiguresStayInTheirBounds) {
  const struct {
    BatteryReading reading;
    std::optional<int> minutes;
    double health = 0;
    int percent = 0;
  } rows[] = {{{.externalConnected = false, .minutesRemaining = 1}, 1},
              {{.externalConnected = false, .minutesRemaining = 65534}, 65534},
              {{.externalConnected = false, .minutesRemaining = 65535}, {}},
              {{.externalConnected = false, .minutesRemaining = 0}, {}},
              {{.minutesRemaining = 161}, {}},
              {{.percent = 61, .fullCapacity = 41, .designCapacity = 50}, {}, 82, 61},
              {{.percent = 104, .fullCapacity = 60, .designCapacity = 50}, {}, 100, 100},
              {{.percent = -3, .fullCapacity = 41}, {}}};
  for (const auto& row : rows) {
    SCOPED_TRACE(&row - rows);
    const auto stats = batteryStats({.battery = row.reading}, 0);
    EXPECT_EQ(stats.minutesRemaining, row.minutes);
    EXPECT_EQ(stats.onAC, row.reading.externalConnected.value_or(true));
    EXPECT_DOUBLE_EQ(stats.health, row.health);
    EXPECT_EQ(stats.percent, row.percent);
  }
}

TEST(SystemSamplerTests, powerComesFromTheBestSourceThatSpeaks) {
  EXPECT_EQ(batteryStats({.adapterWatts = 96}, 20), (BatteryStats{.onAC = true, .systemPower = 96}));
  EXPECT_EQ(batteryStats({}, 20).systemPower, 20);
  EXPECT_EQ(batteryStats({.battery = {{.systemWatts = 10.6}}}, 20).systemPower, 10.6);
  EXPECT_EQ(batteryStats({.battery = {{.present = true}}}, 20).systemPower, 20);
}

struct SystemSamplerCycleTests : testing::Test {
  FakeMachineCounters machine;
  FakeClock clock;
  std::optional<SystemSampler> sampler;

  SystemSamplerCycleTests() {
    machine.machineFacts = {.graphicsName = "Card", .performanceCores = 2, .efficiencyCores = 1};
    sampler.emplace(machine, clock);
  }
  SystemSnapshot sample(double secondsLater = 0) {
    clock.advance(Seconds{secondsLater});
    SystemSnapshot snapshot;
    sampler->sample(snapshot);
    return snapshot;
  }
};

TEST_F(SystemSamplerCycleTests, ratesComeWithTheSecondCycleOverMonotonicTime) {
  machine.diskCounters = {{1, {1000, 500}}};
  machine.interfaceCounters = {{"eth0", "Ethernet", {100, 200}}};
  const auto first = sample();
  EXPECT_EQ(first.disk.readRate + first.disk.writeRate + first.network.inRate + first.network.outRate, 0);

  clock.wall = Date{0}; // somebody set the wall clock back
  machine.diskCounters = {{1, {5000, 400}}, {2, {999, 999}}};
  machine.interfaceCounters = {{"eth0", "Ethernet", {300, 100}}, {"usb0", "", {50, 50}}};
  const auto second = sample(2);
  EXPECT_EQ(second.disk, (DiskStats{.readRate = 2000})) << "a new disk, and a counter that went backwards";
  EXPECT_EQ(second.network, (NetworkStats{100, 0, "Ethernet · eth0", 350, 150}));

  machine.diskCounters = {{2, {1999, 4999}}};
  machine.interfaceCounters = {{"eth0", "Ethernet", {700, 100}}};
  const auto third = sample(4);
  EXPECT_EQ(third.disk, (DiskStats{250, 1000, {}}));
  EXPECT_EQ(third.network.inRate, 100);
}

TEST_F(SystemSamplerCycleTests, volumesAreKeptForThirtySecondsUnlessThereAreNone) {
  EXPECT_THAT(sample().disk.volumes, IsEmpty());
  machine.mountedVolumes = {
      {"", "/", 100, 40}, {"", "/media/me/STICK/", 50, 0}, {"Data", "/data", 9, 9}, {"", "/empty", 0, 0}};
  const std::vector<VolumeInfo> expected{
      {"System disk", "/", 100, 40}, {"STICK", "/media/me/STICK/", 50, 0}, {"Data", "/data", 9, 9}};
  EXPECT_EQ(sample().disk.volumes, expected);
  machine.mountedVolumes.clear();
  EXPECT_EQ(sample(30).disk.volumes, expected);
  EXPECT_THAT(sample(1).disk.volumes, IsEmpty());
}

TEST_F(SystemSamplerCycleTests, whatWasReadIsToldFromWhatIsZero) {
  using enum KnownPart;
  const auto parts = [&](Knowledge state) {
    std::vector<KnownPart> found;
    for (const auto& part : allCases<KnownPart>())
      if (sampler->known()[part.value] == state) found.push_back(part.value);
    return found;
  };
  sample();
  EXPECT_THAT(parts(Knowledge::absent), testing::SizeIs(KnownParts::count)) << "nothing answers";

  machine.cpuCounters = {0.0, {{0, {}}}};
  machine.memoryCounters = {10, MemoryUse{}};
  machine.diskCounters = {{1, {}}};
  machine.mountedVolumes = {{"", "/", 100, 40}};
  machine.interfaceCounters = {{"eth0", "", {}}};
  machine.gpuCounters = {{.memoryInUse = 0, .engineTime = {{"render", 0}}}};
  machine.powerReading = {.battery = {{.present = true, .cycles = 7}}, .packagesRefused = true};
  sample(1);
  EXPECT_THAT(parts(Knowledge::fresh), ElementsAre(load, memory, volumes, graphicsMemory, batteryCycles))
      << "no rate without a second reading";
  EXPECT_THAT(parts(Knowledge::refused), ElementsAre(power, processEnergy));

  machine.powerReading = {.battery = {{.percent = 0, .fullCapacity = 1, .designCapacity = 2, .celsius = 0}},
                          .packages = {{0, {}}}};
  sample(1);
  EXPECT_THAT(parts(Knowledge::fresh),
              ElementsAre(processor, load, memory, disks, network, graphics, graphicsMemory, battery,
                          batteryHealth, batteryTemperature))
      << "an idle machine's zeros are figures";
  EXPECT_THAT(parts(Knowledge::old), ElementsAre(volumes));
  sample(1);
  EXPECT_TRUE(sampler->known().has(power)) << "the package's second reading";
  machine.gpuCounters = {{.utilization = 0}};
  sample(1);
  EXPECT_TRUE(sampler->known().has(graphics));
  machine.gpuCounters.clear();
  sample(1);
  EXPECT_FALSE(sampler->known().has(graphics));
}

TEST_F(SystemSamplerCycleTests, everyRecordIsFilledAndTheRestLeftAlone) {
  machine.cpuCounters = {1.5, {{0, {}}}};
  machine.gpuCounters = {{0, 0, {{"render", 0}}}};
  machine.powerReading.packages = {{0, {0, 0}}};
  EXPECT_THAT(sample().cpu.perCore, IsEmpty()) << "no previous reading";
  machine.cpuCounters.cores = {{0, {1, 1, 2, 0}}};
  machine.memoryCounters = {10, MemoryUse{}};
  machine.gpuCounters = {{5, 6}, {30, 100}, {0, 0, {{"render", 800'000'000}}}};
  machine.powerReading.packages = {{0, {30'000'000, 0}}};
  clock.advance(Seconds{2});
  SystemSnapshot snapshot{.date = Date{7}, .apps = {{.id = "kept"}}};
  sampler->sample(snapshot);
  EXPECT_EQ(snapshot.date, Date{7});
  EXPECT_EQ(snapshot.apps.size(), 1u);
  EXPECT_EQ(snapshot.cpu, (CPUStats{50, 25, 25, {50}, 2, 1, 1.5}));
  EXPECT_EQ(snapshot.memory.free, 10u);
  EXPECT_EQ(snapshot.gpu, (GPUStats{"Card", 40, 106}));
  EXPECT_DOUBLE_EQ(snapshot.battery.systemPower, 15);
  machine.powerReading.packages = {{0, {31'000'000, 0}}};
  machine.gpuCounters[2].engineTime["render"] += 200'000'000;
  const auto third = sample(1);
  EXPECT_EQ(third.gpu.utilization, 30) << "the engine's advance since the last cycle is a fifth";
  EXPECT_DOUBLE_EQ(third.battery.systemPower, 1);
}

} // namespace
} // namespace korvell
