#include "Core/Machine/Models.h"
#include "Core/Machine/UsageOrder.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(ModelsTests, anApplicationIsTheSumOfItsProcesses) {
  const AppUsage app{
      .processes = {{.cpu = 10, .memory = 5, .netOut = 2}, {.cpu = 30, .memory = 7, .netOut = 3}}};
  EXPECT_EQ(app.cpu(), 40);
  EXPECT_EQ(app.memory(), 12u);
  EXPECT_EQ(app.netOut(), 5);
}

TEST(ModelsTests, metricsAreTakenAndShownInTheirOwnUnit) {
  SystemSnapshot snapshot;
  snapshot.memory = {.app = 100 << 20, .wired = 50 << 20, .compressed = 10 << 20, .cached = 9 << 20};
  snapshot.disk = {.readRate = 1e6, .writeRate = 2e6};
  snapshot.battery.systemPower = 12.34;
  const auto text = [&](Metric metric) { return formatMetric(metric, metricValue(metric, snapshot)); };
  EXPECT_EQ(text(Metric::memory), "160 MB");
  EXPECT_EQ(text(Metric::disk), "3.0 MB/s");
  EXPECT_EQ(text(Metric::energy), "12.3 W");
}

TEST(UsageOrderTests, theLargestFirstAndEqualOnesByName) {
  std::vector<AppUsage> apps{
      {.id = "b", .name = "b", .processes = {{.cpu = 5, .memory = 1}}},
      {.id = "a", .name = "a", .processes = {{.cpu = 5, .diskRead = 9}}},
      {.id = "c", .name = "c", .processes = {{.cpu = 3, .netIn = 2}, {.cpu = 3, .power = 1}}},
  };
  const auto order = [&apps](UsageKey key) {
    sortByUsage(apps, key);
    std::string names;
    for (const auto& app : apps) names += app.name;
    return names;
  };
  EXPECT_EQ(order(UsageKey::cpu), "cab");
  EXPECT_EQ(order(UsageKey::memory), "bac");
  EXPECT_EQ(order(UsageKey::disk), "abc");
  EXPECT_EQ(order(UsageKey::network), "cab");
  EXPECT_EQ(order(UsageKey::energy), "cab");
}

} // namespace
} // namespace korvell
