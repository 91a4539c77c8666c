#include "Core/History/MinuteAccumulator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

namespace korvell {
namespace {

TEST(MinuteAccumulatorTests, anInstantBelongsToTheMinuteThatItLiesIn) {
  for (auto [instant, minute] : {std::pair{59.999, 0L},
                                 {1'772'366'459.5, 1'772'366'400L},
                                 {-1.5, -60L},
                                 {-60.0, -60L},
                                 {std::numeric_limits<double>::quiet_NaN(), 0L},
                                 {1e300, 999'999'999'999'960L}})
    EXPECT_EQ(minuteOf(Date{instant}), minute) << instant;
}

TEST(MinuteAccumulatorTests, aMinuteIsTheMeanOfItsSamples) {
  MinuteAccumulator minute;
  auto first = SystemSnapshot::empty(Date{120});
  first.cpu.total = 10;
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
                {.id = "first", .name = "First", .processes = {{.cpu = 8}}}};
  auto second = SystemSnapshot::empty(Date{178});
  second.cpu.total = 30;
  second.apps = {{.id = "both", .name = "Both", .processes = {{.cpu = 50, .memory = 200}}}};
  minute.add(historySample(first, 80));
  minute.add(historySample(second, std::nullopt));
  EXPECT_EQ(minute.take(),
            (HistoryMinute{.ts = 120,
                           .system = {20, 61.5, 5, 6, 25, 3, 1},
                           .score = 80, // the one score, not half of it
                           .apps = {{"both", "Both", "/both", {40, 300, 23.5, 27.5, 0, 30, 22}},
                                    {"first", "First", {}, {4}}}}));
  minute.add(historySample(SystemSnapshot::empty(Date{180}), std::nullopt));
  EXPECT_EQ(minute.take(), (HistoryMinute{.ts = 180, .system = {}, .score = {}, .apps = {}}));
}

TEST(MinuteAccumulatorTests, theLargestByAnyValueAreKept) {
  std::vector<HistoryApp> apps;
  const auto add = [&](std::string id, HistoryColumn column, double value) {
    apps.push_back({.id = std::move(id), .name = "", .path = {}, .values = {}});
    apps.back().values[column] = value;
  };
  add("nothing", cpuColumn, 0);
  for (int i = 0; i < 15; ++i) add("", cpuColumn, 100 - i);
  add("sixteenth", cpuColumn, 85);
  add("sixteenth, but large", memoryColumn, 1e9);
  apps.back().values[cpuColumn] = 0.001;
  for (int i = 0; i < 15; ++i) add("", diskWriteColumn, 1);
  add("as much as the fifteenth, but later", diskWriteColumn, 1);
  add("only graphics", gpuColumn, 100);

  std::vector<std::string> kept;
  for (const auto& app : keptApps(apps)) kept.push_back(app.id);
  std::vector<std::string> expected(31);
  expected[15] = "sixteenth, but large";
  EXPECT_EQ(kept, expected);
}

} // namespace
} // namespace korvell
