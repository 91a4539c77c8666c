#include "Core/History/MinuteAccumulator.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>

namespace korvell {
namespace {

SystemSnapshot snapshotAt(double seconds, double cpu = 0) {
  auto snapshot = SystemSnapshot::empty(Date{seconds});
  snapshot.cpu.total = cpu;
  return snapshot;
}

AppUsage app(const std::string& id, double cpu, std::uint64_t memory = 0) {
  return {.id = id, .name = id + " name", .processes = {{.pid = 1, .cpu = cpu, .memory = memory}}};
}

TEST(MinuteAccumulatorTests, anInstantBelongsToTheMinuteThatItLiesIn) {
  const double infinite = std::numeric_limits<double>::infinity();
  for (auto [instant, minute] : {std::pair{0.0, 0L},
                                 {59.999, 0L},
                                 {60.0, 60L},
                                 {1'772'366'459.5, 1'772'366'400L},
                                 {-1.5, -60L},
                                 {-60.0, -60L},
                                 {infinite, 0L},
                                 {std::numeric_limits<double>::quiet_NaN(), 0L},
                                 {1e300, 999'999'999'999'960L}})
    EXPECT_EQ(minuteOf(Date{instant}), minute) << instant;
}

TEST(MinuteAccumulatorTests, aMinuteIsTheMeanOfItsSamples) {
  MinuteAccumulator minute;
  auto first = snapshotAt(120, 10);
  first.memory = {.app = 100, .wired = 20, .compressed = 3, .cached = 1000};
  first.disk = {.readRate = 8, .writeRate = 2};
  first.network = {.inRate = 5, .outRate = 7};
  first.gpu.utilization = 50;
  first.battery.systemPower = 6;
  first.apps = {{.id = "both",
                 .name = "Both",
                 .bundlePath = "/both",
                 .processes = {{.cpu = 10, .memory = 150, .diskRead = 3, .diskWrite = 4, .netIn = 5},
                               {.cpu = 20, .memory = 250, .diskWrite = 40, .netOut = 50, .power = 60}}},
                app("first", 8)};
  auto second = snapshotAt(178, 30);
  second.apps = {app("both", 50, 200)};
  minute.add(historySample(first, 80));
  minute.add(historySample(second, std::nullopt));
  const auto row = minute.take();

  EXPECT_EQ(row.ts, 120);
  EXPECT_EQ(row.system, (HistoryValues{20, 61.5, 5, 6, 25, 3, 1}));
  EXPECT_EQ(row.score, 80); // the one score, not half of it
  ASSERT_EQ(row.apps.size(), 2u);
  EXPECT_EQ(row.apps[0].values, (HistoryValues{40, 300, 23.5, 27.5, 0, 30, 22})) << "all its processes";
  EXPECT_EQ(row.apps[0].path, "/both");
  EXPECT_EQ(row.apps[1].values[cpuColumn], 4) << "absent from one sample of two";
  EXPECT_TRUE(minute.isEmpty());
  minute.add(historySample(snapshotAt(180, 10), std::nullopt));
  EXPECT_EQ(minute.take(), (HistoryMinute{.ts = 180, .system = {10}, .score = {}, .apps = {}}))
      << "a new minute starts from nothing";
}

TEST(MinuteAccumulatorTests, theLargestByAnyValueAreKept) {
  std::vector<HistoryApp> apps;
  const auto add = [&](std::string id, HistoryColumn column, double value) {
    apps.push_back({.id = std::move(id), .name = "", .path = {}, .values = {}});
    apps.back().values[column] = value;
  };
  for (int i = 0; i < 16; ++i) add("cpu" + std::to_string(i), cpuColumn, 100 - i);
  add("last by cpu, large", memoryColumn, 1e9);
  apps.back().values[cpuColumn] = 0.001;
  for (int i = 0; i < 15; ++i) add("disk" + std::to_string(i), diskWriteColumn, 1);
  add("equal to the fifteenth, but later", diskWriteColumn, 1);
  add("only graphics", gpuColumn, 100);
  add("nothing", cpuColumn, 0);

  const auto kept = keptApps(apps);
  const auto has = [&](std::string_view id) {
    return std::any_of(kept.begin(), kept.end(), [&](const auto& app) { return app.id == id; });
  };
  EXPECT_EQ(kept.size(), 31u);
  EXPECT_TRUE(has("cpu14"));
  EXPECT_TRUE(has("last by cpu, large"));
  EXPECT_TRUE(has("disk14"));
  for (auto id : {"cpu15", "equal to the fifteenth, but later", "only graphics", "nothing"})
    EXPECT_FALSE(has(id)) << id;
}

} // namespace
} // namespace korvell
