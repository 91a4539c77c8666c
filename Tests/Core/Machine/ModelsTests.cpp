#include "Core/Machine/Models.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(ModelsTests, theEmptySnapshotShowsAMachineOnPower) {
  const auto snapshot = SystemSnapshot::empty(Date{1000});
  EXPECT_EQ(snapshot.date, Date{1000});
  EXPECT_TRUE(snapshot.battery.onAC);
  EXPECT_FALSE(snapshot.battery.present);
  EXPECT_EQ(snapshot.battery.minutesRemaining, std::nullopt);
  EXPECT_EQ(snapshot.network.interface, "–");
  EXPECT_EQ(snapshot.gpu.name, "GPU");
  for (const auto& metric : allCases<Metric>())
    EXPECT_EQ(metricValue(metric.value, snapshot), 0) << metric.rawValue;
}

TEST(ModelsTests, rawValuesAndSectionsAreExact) {
  EXPECT_EQ(fromRawValue<Metric>("CPU"), std::nullopt);
  EXPECT_EQ(fromRawValue<MemoryStats::Pressure>("Normal"), MemoryStats::Pressure::normal);
  EXPECT_EQ(fromRawValue<MemoryStats::Pressure>("normal"), std::nullopt);
  EXPECT_EQ(title(SidebarItem::energy), "Battery");
  EXPECT_EQ(title(Metric::energy), "Energy");
  int withMetric = 0;
  for (const auto& item : allCases<SidebarItem>()) withMetric += metric(item.value).has_value();
  EXPECT_EQ(withMetric, 6);
}

TEST(ModelsTests, anApplicationIsTheSumOfItsProcesses) {
  const AppUsage app{
      .processes = {{.cpu = 10, .memory = 5, .netOut = 2}, {.cpu = 30, .memory = 7, .netOut = 3}}};
  EXPECT_EQ(app.cpu(), 40);
  EXPECT_EQ(app.memory(), 12u);
  EXPECT_EQ(app.netOut(), 5);
  EXPECT_NE(app.processes[0], (ProcessUsage{.cpu = 11, .memory = 5, .netOut = 2}));
}

TEST(ModelsTests, metricsAreTakenAndShownInTheirOwnUnit) {
  SystemSnapshot snapshot;
  snapshot.memory = {
      .total = 1u << 30, .app = 100 << 20, .wired = 50 << 20, .compressed = 10 << 20, .cached = 999};
  snapshot.disk = {.readRate = 1e6, .writeRate = 2e6};
  snapshot.battery.systemPower = 12.34;
  EXPECT_EQ(formatMetric(Metric::memory, metricValue(Metric::memory, snapshot)), "160 MB");
  EXPECT_EQ(formatMetric(Metric::disk, metricValue(Metric::disk, snapshot)), "3.0 MB/s");
  EXPECT_EQ(formatMetric(Metric::energy, metricValue(Metric::energy, snapshot)), "12.3 W");
}

} // namespace
} // namespace korvell
