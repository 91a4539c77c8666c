#include "Core/AIUsage/AIUsageStore.h"

#include "Base/ManualQueue.h"
#include "LogText.h"
#include "Tests/Fakes/FakeLogFiles.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

struct StoreTests : testing::Test {
  TemporaryFolder folder;
  FakeLogFiles files;
  FakeTimeZone zone;
  FakeUserDefaults defaults;
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeQueue("main");
  std::vector<HealthAlert> posted, delivered;
  bool accepts = true;
  int scanners = 0;
  std::unique_ptr<AIUsageStore> store = make();

  PlanLimitAlerts::Seams alertSeams() {
    return {defaults, zone, [] { return std::string("id"); },
            [this](const HealthAlert& alert) {
              posted.push_back(alert);
              return accepts;
            }};
  }
  std::unique_ptr<AIUsageStore> make() {
    auto made = std::make_unique<AIUsageStore>(
        *main, time.factory(), time.clock(),
        [this](Cancellation cancellation) {
          ++scanners;
          return std::make_unique<AIUsageScanner>(
              AIUsageScanner::Options{folder / "ai-usage.sqlite", "/home/ann", cancellation}, files, zone,
              time.clock());
        },
        alertSeams());
    made->onAlert = [this](const HealthAlert& alert) { delivered.push_back(alert); };
    return made;
  }
};

TEST_F(StoreTests, refreshesAfterFiveSecondsThenEveryFiveMinutesAndNeverTwiceAtOnce) {
  std::vector<double> ends;
  const auto subscription = store->summary.observe(
      [&](const AIUsageSummary&) { ends.push_back(time.clock().monotonic().count()); });
  store->start();
  store->start();
  time.advance(Seconds{610});
  EXPECT_EQ(ends, (std::vector<double>{5, 305, 605}));
  EXPECT_EQ(scanners, 1);
  EXPECT_TRUE(store->summary->rows.empty());
  EXPECT_EQ(store->summary->updatedAt->sinceEpoch, ManualClock().now().sinceEpoch + 605);
  EXPECT_EQ(store->summary->lastScan->files, 0);

  store->refresh();
  store->refresh();
  EXPECT_TRUE(*store->isScanning);
  time.run();
  EXPECT_EQ(ends.size(), 4u);
  EXPECT_FALSE(*store->isScanning);
  store->refresh();
  store.reset();
  time.run();
  EXPECT_EQ(ends.size(), 4u) << "a summary of a store that is gone reaches nobody";
}

TEST_F(StoreTests, aScanEndsInAnAlert) {
  const auto resets = ManualClock().now().sinceEpoch + 3'600; // 2026-03-01 13:00, a Sunday
  files.files["/home/ann/.codex/sessions/a.jsonl"] = {
      CodexText{.limits = fmt::format(R"({{"primary":{{"used_percent":84.6,"window_minutes":10080,)"
                                      R"("resets_at":{}}}}})",
                                      std::int64_t(resets))}
              .text() +
          "\n",
      time.clock().now()};
  store->refresh();
  time.run();
  ASSERT_EQ(delivered.size(), 1u);
  EXPECT_EQ(delivered[0].title, "Codex weekly limit at 84%");
  EXPECT_EQ(delivered[0].detail, "Resets Sunday 1:00 PM.");
  EXPECT_EQ(delivered[0].kind, HealthAlert::Kind::aiPlanLimit);
  EXPECT_EQ(delivered[0].appName, "Codex");
  EXPECT_EQ(defaults.number("aiPlanLimit.lastReset.10080"), resets);
  EXPECT_EQ(store->summary->rows.at(0).day, startOfDay(zone, localDay(zone, time.clock().now())));
  store = make();
  store->refresh();
  time.run();
  EXPECT_EQ(posted.size(), 1u) << "once a window, across restarts";
}

TEST_F(StoreTests, whichLimitsAlert) {
  const Date now = time.clock().now();
  const auto alerts = [&](double used, double in, std::int64_t minutes = 300) {
    posted.clear();
    PlanLimitAlerts(alertSeams())
        .check({.date = now, .primary = AIPlanLimit{used, minutes, now + Seconds{in}}}, now);
    return posted.size();
  };
  EXPECT_EQ(alerts(79.99, 10), 0u);
  EXPECT_EQ(alerts(80, 10), 1u);
  EXPECT_EQ(alerts(100, 10), 0u) << "the same window";
  EXPECT_EQ(alerts(80, 11), 1u) << "the next one";
  EXPECT_EQ(alerts(80, 11, 1'440), 1u) << "windows of another length are apart";
  EXPECT_EQ(alerts(100, 0), 0u) << "already reset";
  EXPECT_EQ(alerts(NAN, 12), 0u);
  accepts = false;
  store->onAlert = [](const HealthAlert&) { FAIL(); };
  EXPECT_EQ(alerts(80, 13), 1u);
  EXPECT_EQ(alerts(80, 13), 0u) << "held back, and marked all the same";
  defaults.readOnly = true;
  PlanLimitAlerts unstored(alertSeams());
  const AICodexLimits limits{.date = now, .secondary = AIPlanLimit{90, 60, now + Seconds{14}}};
  unstored.check(limits, now);
  posted.clear();
  unstored.check(limits, now);
  EXPECT_TRUE(posted.empty()) << "settings that can't be stored";
}

} // namespace
} // namespace korvell
