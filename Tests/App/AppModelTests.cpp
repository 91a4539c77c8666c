#include "Tests/App/AppFixture.h"

#include "App/Keeper.h"
#include "Core/Health/AlertPosting.h"
#include "Tests/Fakes/FakeLogFiles.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

constexpr std::uint64_t gigabyte = 1'000'000'000;

MATCHER(Near, "") { return std::abs(std::get<0>(arg) - std::get<1>(arg)) < 0.001; }

struct AppModelTests : AppFixture {
  const Date begin = time.clock().now();
  std::vector<double> cycles; ///< seconds after the beginning at which snapshots were published
  Subscription subscription = model->snapshot.observe(
      [this](const auto& snapshot) { cycles.push_back((snapshot.date - begin).count()); });

  std::vector<double> cyclesWithin(double seconds) {
    cycles.clear();
    time.advance(Seconds{seconds});
    return cycles;
  }
  /// Keeps so many cores busy in process 10, in cycles of ten seconds.
  void work(double busyCores, double seconds) {
    for (int cycle = 0; cycle < int(seconds / 10); ++cycle) {
      table.processes.at(10).counters.cpuTime += std::uint64_t(busyCores * 10e9);
      for (int core = 0; core < cores; ++core) {
        machine.cpuCounters.cores[core].user += std::uint64_t(1000 * busyCores / cores);
        machine.cpuCounters.cores[core].idle += std::uint64_t(1000 * (1 - busyCores / cores));
      }
      time.advance(Seconds{10});
    }
  }
  std::vector<std::string> alertTitles() const {
    std::vector<std::string> titles;
    for (const auto& alert : *model->alerts) titles.push_back(alert.title);
    return titles;
  }
};

TEST_F(AppModelTests, theFirstTickShowsTheMachineButNoRates) {
  time.run();
  EXPECT_EQ(cycles.size(), 1u);
  EXPECT_FALSE(model->hasSample.get());
  EXPECT_TRUE(model->live->empty());
  time.advance(Seconds{2});
  EXPECT_TRUE(model->hasSample.get());
  EXPECT_EQ(model->live->size(), allCases<Metric>().size());
  EXPECT_EQ(model->live->at(Metric::cpu).size(), 1u);
  EXPECT_EQ(state.refreshes, 2) << "what is told by differences needs two readings";
}

TEST_F(AppModelTests, thePaceFollowsWhoeverWatches) {
  EXPECT_THAT(cyclesWithin(6), Pointwise(Near(), {0, 2, 4, 6}));
  attention.watched = false; // noticed by the cycle at 8 s, which puts the next one ten seconds off
  EXPECT_THAT(cyclesWithin(30), Pointwise(Near(), {8, 18, 28}));
  attention.watched = true; // noticed at 38 s
  EXPECT_THAT(cyclesWithin(6.5), Pointwise(Near(), {38.0, 38.2, 40.2, 42.2}));
  model->wake();
  EXPECT_THAT(cyclesWithin(0), IsEmpty()) << "it was awake";

  attention.watched = false; // noticed at 44.2 s
  time.advance(Seconds{600});
  const int refreshes = state.refreshes;
  time.advance(Seconds{60});
  EXPECT_EQ(state.refreshes, refreshes + 2) << "what is slower slows down too";
  model->wake();
  EXPECT_EQ(cyclesWithin(0).size(), 1u);
  EXPECT_THAT(cyclesWithin(9), IsEmpty()) << "nobody looks after all";
}

TEST_F(AppModelTests, whoeverObservesOneValueFindsTheOthersOfItsCycle) {
  time.advance(Seconds{2});
  machine.memoryCounters = {16 * gigabyte, MemoryUse{.app = 15 * gigabyte}};
  table.add(10, "node").directory = "/home/u/shop";
  table.ports = {{10, {3000}}};
  int told = 0;
  const auto look = [&](const auto&) {
    ++told;
    EXPECT_EQ(model->live->at(Metric::memory).back().value, metricValue(Metric::memory, *model->snapshot));
    EXPECT_EQ(model->projects->size(), *model->cycle >= 4 ? 1u : 0u);
  };
  const auto all = {model->snapshot.observe(look), model->report.observe(look), model->projects.observe(look),
                    model->live.observe(look), model->cycle.observe(look)};
  time.advance(Seconds{4});
  EXPECT_EQ(told, 2 * int(all.size()) - 1) << "servers are scanned in one of the two";
}

TEST_F(AppModelTests, theLiveSeriesCoverFiveMinutes) {
  time.advance(Seconds{1000});
  const auto& points = model->live->at(Metric::memory);
  EXPECT_EQ(points.size(), 151u);
  EXPECT_EQ(model->snapshot->date - points.front().date, AppModel::liveSpan);
}

TEST_F(AppModelTests, aClockSetBackKeepsTheRates) {
  machine.diskCounters[1] = {};
  time.run();
  for (int cycle = 0; cycle < 3; ++cycle) {
    machine.diskCounters[1].in += 2'000'000;
    if (cycle == 1) time.clock().setNow(Date{1000});
    time.advance(Seconds{2});
    EXPECT_NEAR(model->snapshot->disk.readRate, 1e6, 1) << cycle;
  }
  EXPECT_EQ(model->live->at(Metric::disk).size(), 2u) << "none from the future";
}

TEST_F(AppModelTests, whatIsUnderWayWhenTheModelEndsIsDropped) {
  table.add(10, "node").directory = "/home/u/shop";
  table.ports = {{10, {3000}}};
  time.advance(Seconds{2});
  int answers = 0;
  model->stop(model->projects->at(0).servers.at(0), [&](StopOutcome) { ++answers; });
  time.clock().elapse(Seconds{2});
  model->sampler().queue().sync([] {}); // a cycle has run, its tick waits on the main queue
  subscription.reset();
  model.reset();
  time.advance(Seconds{30});
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(table.sent.size(), 1u);
}

// An hour and a half from Monday, 8:50, as the keeper sees it.
TEST_F(AppModelTests, theLoadShowsInTheScoreTheAlertsAndTheMenuBar) {
  machine.memoryCounters = {16 * gigabyte, MemoryUse{.app = 4 * gigabyte}};
  machine.mountedVolumes = {{"Disk", "/", std::int64_t(1000 * gigabyte), std::int64_t(500 * gigabyte)}};
  attention.watched = false;
  defaults.set(menuBarStyleKey, "cpuAndMemory");
  defaults.set("weeklyReport.lastSent", begin - Seconds{86'400 * 6});
  table.add(10, "build");
  work(0.4, 600);
  EXPECT_EQ(model->report->score, 100);
  work(3.6, 900); // ninety percent of the machine
  EXPECT_EQ(model->report->score, 85);
  EXPECT_EQ(model->report->insights.at(0).detail, "90% on average. build is the main load.");
  EXPECT_EQ(model->report->insights.at(0).action->name, "build");
  EXPECT_EQ(*model->menuBar.score, 85);
  EXPECT_EQ(*model->menuBar.cpu, 90);
  EXPECT_EQ(*model->menuBar.memory, 25);
  state.thermal = ThermalState::serious;
  machine.memoryCounters.total = 0;
  work(3.6, 60);
  EXPECT_EQ(model->report->score, 70);
  EXPECT_EQ(*model->menuBar.memory, 0);
  state.thermal = ThermalState::nominal;
  work(0, 900);
  EXPECT_EQ(model->report->score, 100);
  const double average = model->history().averageScore(begin).value_or(0);
  EXPECT_TRUE(average > 85 && average < 99) << average;

  machine.memoryCounters.total = 16 * gigabyte;
  table.add(11, "leaky").counters.footprint = gigabyte;
  for (int cycle = 0; cycle < 310; ++cycle) {
    table.processes.at(11).counters.footprint += gigabyte / 200; // 1.8 GB an hour
    work(0, 10);
  }
  EXPECT_THAT(alertTitles(), ElementsAre("leaky keeps using more memory", "build is keeping the CPU busy"));
  EXPECT_THAT(notifications.titles(),
              ElementsAre(testing::HasSubstr("last week"), "build is keeping the CPU busy",
                          "leaky keeps using more memory"));
  EXPECT_EQ(notifications.permissionRequests, 1);

  const auto raised = *model->alerts;
  subscription.reset();
  EXPECT_EQ(model->finish(), std::nullopt);
  start();
  EXPECT_EQ(*model->alerts, raised) << "a restart forgets none";
}

TEST_F(AppModelTests, theHistoryAnswersViewsLaterOnTheMainQueue) {
  attention.watched = false;
  table.add(10, "build");
  work(2, 600);
  std::vector<std::string> answers;
  const auto askAll = [&] {
    auto& queries = model->queries();
    queries.chart(Metric::cpu, HistoryRange::h12, 720, [&](const ChartSeries& chart) {
      EXPECT_TRUE(main->isCurrent());
      EXPECT_EQ(chart.points.size(), model->history().recent(Metric::cpu, 60).size());
      EXPECT_GT(chart.points.size(), 8u);
      answers.push_back("chart");
    });
    queries.topApps(Metric::cpu, HistoryRange::h24, 1,
                    [&](const std::vector<AppTotal>& apps) { answers.push_back(apps.at(0).name); });
    queries.moment(begin + Seconds{120}, [&](const std::optional<HistoryMinute>& minute) {
      answers.push_back(minute->apps.at(0).name);
    });
    queries.totals(begin, time.clock().now(), [&](const Totals& totals) {
      EXPECT_NEAR(totals.cpuToday, 50, 1);
      answers.push_back("totals");
    });
    EXPECT_THAT(answers, IsEmpty()) << "nobody waits";
  };
  askAll();
  time.run();
  EXPECT_THAT(answers, ElementsAre("chart", "build", "build", "totals"));
  answers.clear();
  askAll();
  subscription.reset();
  model.reset();
  time.run();
  EXPECT_THAT(answers, IsEmpty());
}

TEST_F(AppModelTests, planLimitsOfAICodingToolsRaiseAlerts) {
  FakeTimeZone scanZone;
  FakeLogFiles files;
  start(std::make_unique<AIUsageStore>(
      *main, time.factory(), time.clock(),
      [&](const Cancellation&) {
        return std::make_unique<AIUsageScanner>(
            AIUsageScanner::defaults({.home = "/home/ann", .data = folder.path()}), files, scanZone,
            time.clock());
      },
      PlanLimitAlerts::Seams{
          defaults, zone, [] { return std::string("id"); },
          [&](const HealthAlert& alert) { return post(alert, defaults, notifications); }}));
  for (const char* used : {"79", "80"}) {
    auto& log = files.files["/home/ann/.codex/sessions/a.jsonl"];
    log.modified = time.clock().now();
    log.text += R"({"timestamp":")" + rfc3339(log.modified) +
                R"(","type":"event_msg","payload":{"type":"token_count","rate_limits":{"primary":)" +
                R"({"used_percent":)" + used + R"(,"window_minutes":300,"resets_at":)" +
                std::to_string(std::int64_t(begin.sinceEpoch) + 9'000) + "}}}}\n";
    EXPECT_THAT(alertTitles(), IsEmpty());
    time.advance(Seconds{300});
  }
  EXPECT_THAT(alertTitles(), ElementsAre("Codex 5-hour limit at 80%"));
  EXPECT_THAT(notifications.titles(), ElementsAre("Codex 5-hour limit at 80%"));
  Value told;
  Keeper(*main, *model, *actions)
      .handle(*parseJSON(R"({"ask":"state","parts":["aiUsage"]})"), [&](const Value& answer) {
        told = *answer.find("aiUsage")->find("codexLimits")->find("primary")->find("usedPercent");
      });
  EXPECT_EQ(told, Value(80.0));

  for (int i = 0; i < 150; ++i) model->aiUsage()->onAlert({});
  EXPECT_EQ(model->alerts->size(), AppModel::mostAlerts);
  model->aiUsage()->refresh();
  model.reset();
  time.advance(Seconds{600});
}

} // namespace
} // namespace korvell
