#include "Core/AIUsage/AIUsageStore.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeLogFiles.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <cmath>
#include <gtest/gtest.h>

namespace korvell {
namespace {

struct StoreTests : testing::Test {
  TemporaryFolder folder;
  FakeLogFiles files;
  FakeTimeZone zone;
  FakeUserDefaults defaults;
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::vector<HealthAlert> posted;
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
  static std::vector<HealthAlert> check(PlanLimitAlerts&& alerts, const AICodexLimits& limits, Date now) {
    return check(alerts, limits, now);
  }
  static std::vector<HealthAlert> check(PlanLimitAlerts& alerts, const AICodexLimits& limits, Date now) {
    return alerts.post(alerts.markDue(limits, now), now);
  }
  std::unique_ptr<AIUsageStore> make() {
    return std::make_unique<AIUsageStore>(
        *main, time.factory(), time.clock(),
        [this](Cancellation cancellation) {
          ++scanners;
          return std::make_unique<AIUsageScanner>(
              AIUsageScanner::Options{.cacheURL = folder / "ai-usage.sqlite",
                                      .claudeRoot = "/claude",
                                      .codexRoot = "/codex",
                                      .home = "/home/ann",
                                      .cancellation = cancellation},
              files, zone, time.clock());
        },
        alertSeams());
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
  EXPECT_EQ(*store->outcome, AIUsageScanner::Outcome::done);

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

// What a scan found reaches the model as an alert in the tests of the model.
TEST_F(StoreTests, whichLimitsAlert) {
  const Date now = time.clock().now(); // 2026-03-01 12:00, a Sunday
  const auto alerts = [&](double used, double in, std::int64_t minutes = 300) {
    posted.clear();
    return check(PlanLimitAlerts(alertSeams()), // made anew, as after a restart
                 {.date = now, .primary = AIPlanLimit{used, minutes, now + Seconds{in}}}, now);
  };
  EXPECT_EQ(alerts(79.99, 10).size(), 0u);
  EXPECT_EQ(alerts(80, 10).size(), 1u);
  EXPECT_EQ(alerts(100, 10).size(), 0u) << "the same window";
  EXPECT_EQ(alerts(80, 11).size(), 1u) << "the next one";
  EXPECT_EQ(alerts(84.6, 3'600, 10'080), (std::vector{HealthAlert{.id = "id",
                                                                  .kind = HealthAlert::Kind::aiPlanLimit,
                                                                  .appName = "Codex",
                                                                  .title = "Codex weekly limit at 84%",
                                                                  .detail = "Resets Sunday 1:00 PM.",
                                                                  .date = now}}))
      << "windows of another length are apart";
  EXPECT_EQ(defaults.number("aiPlanLimit.lastReset.10080"), now.sinceEpoch + 3'600);
  EXPECT_EQ(alerts(100, 0).size(), 0u) << "already reset";
  EXPECT_EQ(alerts(NAN, 12).size(), 0u);
  accepts = false;
  EXPECT_EQ(alerts(80, 13).size(), 0u);
  EXPECT_EQ(posted.size(), 1u);
  EXPECT_EQ(alerts(80, 13).size() + posted.size(), 0u) << "held back, and marked all the same";
  accepts = true;
  defaults.readOnly = true;
  PlanLimitAlerts unstored(alertSeams());
  const AICodexLimits limits{.date = now, .secondary = AIPlanLimit{90, 60, now + Seconds{14}}};
  EXPECT_EQ(check(unstored, limits, now).size(), 1u);
  EXPECT_EQ(check(unstored, limits, now).size(), 0u) << "settings that can't be stored";
}

TEST_F(StoreTests, windowsOfOneLengthAreKeptApart) {
  const Date now = time.clock().now();
  for (const std::int64_t minutes : {0, 300}) {
    const AICodexLimits limits{.date = now,
                               .primary = AIPlanLimit{90, minutes, now + Seconds{10}},
                               .secondary = AIPlanLimit{1e300, minutes, now + Seconds{20}}};
    PlanLimitAlerts alerts(alertSeams());
    EXPECT_EQ(check(alerts, limits, now).size(), 2u);
    EXPECT_EQ(check(alerts, limits, now).size(), 0u);
    EXPECT_EQ(check(PlanLimitAlerts(alertSeams()), limits, now).size(), 0u) << "after a restart";
  }
  std::vector<std::string> titles;
  for (const auto& alert : posted) titles.push_back(alert.title);
  EXPECT_EQ(titles, (std::vector<std::string>{"Codex plan limit at 90%", "Codex plan limit at 999%",
                                              "Codex 5-hour limit at 90%", "Codex 5-hour limit at 999%"}));
}

TEST_F(StoreTests, marksAreStoredWhereTheMainThreadNeedNotWait) {
  files.files["/codex/a.jsonl"] = {
      R"({"timestamp":")" + rfc3339(time.clock().now()) +
          R"(","payload":{"type":"token_count","rate_limits":{"secondary":{"used_percent":80.0,"resets_at":)" +
          std::to_string(std::int64_t(time.clock().now().sinceEpoch) + 99) + "}}}}\n",
      time.clock().now()};
  store->onAlert = [this](const HealthAlert&) { EXPECT_TRUE(main->isCurrent()); };
  bool onMain = false;
  defaults.onChange = [&] { onMain = onMain || main->isCurrent(); };
  store->start();
  time.advance(Seconds{310});
  EXPECT_EQ(posted.size(), 1u);
  EXPECT_EQ(defaults.changed, (std::vector<std::string>{"aiPlanLimit.lastReset.0.secondary"}));
  EXPECT_FALSE(onMain);
}

} // namespace
} // namespace korvell
