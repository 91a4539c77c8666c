#include "App/AppModel.h"

#include "App/Keeper.h"
#include "Base/ManualQueue.h"
#include "Core/Health/AlertPosting.h"
#include "Tests/Fakes/FakeLogFiles.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

class SwitchedAttention final : public Attention {
public:
  bool watched = true;
  bool isWatched() const override { return watched; }
};

struct AppModelTests : testing::Test {
  ManualScheduler time;
  FakeMachineCounters machine;
  SwitchedAttention attention;
  std::unique_ptr<Queue> main = time.makeQueue("main");
  std::unique_ptr<AppModel> model;
  std::vector<Date> published;
  Subscription subscription;

  void start() {
    machine.memoryCounters = {};
    model = std::make_unique<AppModel>(
        *main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine), attention);
    subscription = model->snapshot.observe([this](const SystemSnapshot& s) { published.push_back(s.date); });
  }
  /// Seconds from `origin` at which snapshots were published since the last call.
  std::vector<double> cyclesSince(Date origin) {
    std::vector<double> seconds;
    for (const Date date : std::exchange(published, {})) seconds.push_back((date - origin).count());
    return seconds;
  }
};

using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

MATCHER(Near, "") { return std::abs(std::get<0>(arg) - std::get<1>(arg)) < 0.001; }

TEST_F(AppModelTests, theFirstTickShowsTheMachineButNoRates) {
  start();
  EXPECT_TRUE(model->snapshot->battery.onAC);
  time.run();
  EXPECT_EQ(published.size(), 1u);
  EXPECT_FALSE(model->hasSample.get());
  EXPECT_TRUE(model->live->empty());
  time.advance(Seconds(2));
  EXPECT_TRUE(model->hasSample.get());
  EXPECT_EQ(model->live->size(), allCases<Metric>().size());
  EXPECT_EQ(model->live->at(Metric::cpu).size(), 1u);
}

TEST_F(AppModelTests, thePaceFollowsWhoeverWatches) {
  const Date origin = time.clock().now();
  start();
  time.advance(Seconds(6));
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {0, 2, 4, 6}));

  attention.watched = false; // noticed by the cycle at 8 s, which puts the next one ten seconds off
  time.advance(Seconds(30));
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {8, 18, 28}));

  attention.watched = true; // noticed at 38 s
  time.advance(Seconds(6.5));
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {38.0, 38.2, 40.2, 42.2}));
}

TEST_F(AppModelTests, wakingSamplesAtOnceAndTheNextCycleDecidesAgain) {
  const Date origin = time.clock().now();
  attention.watched = false;
  start();
  time.advance(Seconds(13));
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {0, 10}));

  model->wake();
  time.run();
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {13}));
  time.advance(Seconds(10)); // nobody looks after all
  EXPECT_THAT(cyclesSince(origin), Pointwise(Near(), {23}));

  attention.watched = true;
  model->wake();
  model->wake(); // already awake: no second cycle
  time.run();
  EXPECT_EQ(cyclesSince(origin).size(), 1u);
}

TEST_F(AppModelTests, theLiveSeriesCoverFiveMinutes) {
  start();
  time.advance(Seconds(1000));
  const auto& points = model->live->at(Metric::memory);
  EXPECT_EQ(points.size(), 151u);
  EXPECT_EQ(model->snapshot->date - points.front().date, AppModel::liveSpan);

  // Points from a future that the clock was set back from are not kept.
  time.clock().setNow(time.clock().now() - Seconds(100'000));
  time.advance(Seconds(4));
  EXPECT_EQ(model->live->at(Metric::memory).size(), 2u);
}

TEST_F(AppModelTests, aClockSetBackKeepsTheRates) {
  machine.diskCounters[1] = {.in = 0, .out = 0};
  start();
  time.run();
  for (int cycle = 0; cycle < 3; ++cycle) {
    machine.diskCounters[1].in += 2'000'000;
    if (cycle == 1) time.clock().setNow(Date{1000});
    time.advance(Seconds(2));
    EXPECT_NEAR(model->snapshot->disk.readRate, 1e6, 1) << cycle;
  }
}

TEST_F(AppModelTests, aTickOnItsWayWhenTheModelEndsIsDropped) {
  start();
  model->sampler().queue().sync([] {}); // a cycle has run, its tick waits on the main queue
  subscription.reset();
  model.reset();
  time.advance(Seconds(30));
  EXPECT_EQ(published.size(), 0u);
}

// The store inside the model: its timer, its alerts among the others, its switch, its summary for other
// processes, and an end in the middle of everything.
TEST_F(AppModelTests, planLimitsOfAICodingToolsRaiseAlerts) {
  const TemporaryFolder folder;
  const FakeTimeZone zone;
  FakeTimeZone scanZone;
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  FakeLogFiles files;
  const auto begin = time.clock().now();
  const auto spend = [&](double percent, int windowMinutes) {
    auto& log = files.files["/home/ann/.codex/sessions/a.jsonl"];
    log.modified = time.clock().now();
    log.text += R"({"timestamp":")" + rfc3339(log.modified) +
                R"(","type":"event_msg","payload":{"type":"token_count","rate_limits":{"primary":)" +
                R"({"used_percent":)" + std::to_string(percent) + R"(,"window_minutes":)" +
                std::to_string(windowMinutes) + R"(,"resets_at":)" +
                std::to_string(std::int64_t(begin.sinceEpoch) + 90'000) + "}}}}\n";
  };
  model = std::make_unique<AppModel>(
      *main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine), attention,
      AppModel::Seams{},
      std::make_unique<AIUsageStore>(
          *main, time.factory(), time.clock(),
          [&](Cancellation ending) {
            return std::make_unique<AIUsageScanner>(
                AIUsageScanner::Options{folder / "ai-usage.sqlite", "/home/ann", ending}, files, scanZone,
                time.clock());
          },
          PlanLimitAlerts::Seams{
              defaults, zone, [] { return std::string("id"); },
              [&](const HealthAlert& alert) { return post(alert, defaults, notifications); }}));
  const auto titles = [&] {
    std::vector<std::string> all;
    for (const auto& alert : *model->alerts) all.push_back(alert.title);
    return all;
  };
  spend(79, 300);
  time.advance(Seconds(10));
  EXPECT_THAT(titles(), ElementsAre());
  spend(80, 300);
  time.advance(Seconds(300));
  spend(91.5, 10'080);
  time.advance(Seconds(300));
  EXPECT_THAT(titles(), ElementsAre("Codex weekly limit at 91%", "Codex 5-hour limit at 80%"));
  EXPECT_THAT(notifications.titles(), ElementsAre("Codex 5-hour limit at 80%", "Codex weekly limit at 91%"));

  defaults.set("alert.aiPlanLimit", false);
  spend(99, 1'440);
  time.advance(Seconds(300));
  defaults.set("alert.aiPlanLimit", true);
  time.advance(Seconds(300));
  EXPECT_EQ(notifications.posted.size(), 2u) << "held back while switched off, and not made up for";

  std::string told;
  Keeper(*main, *model)
      .handle(*parseJSON(R"({"ask":"state","parts":["aiUsage"]})"), [&](const Value& answer) {
        told = dumpJSON(*answer.find("aiUsage")->find("codexLimits")->find("primary")->find("usedPercent"));
      });
  EXPECT_EQ(told, "99.0");

  model->aiUsage()->refresh();
  model.reset();
  time.advance(Seconds(600));
}

} // namespace
} // namespace korvell
