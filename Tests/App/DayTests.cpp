// Days of a machine played through the whole loop under manual time: what the keeper would have seen and
// said.

#include "App/AppModel.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeMachineState.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/OneEach.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int cores = 4;
constexpr std::uint64_t gigabyte = 1'000'000'000;

struct DayTests : testing::Test {
  ManualScheduler time{*parseRFC3339("2026-02-28T12:00:20Z")}; // a Saturday
  const Date begin = time.clock().now();
  FakeMachineCounters machine;
  FakeProcessTable table;
  FakeRunningApplications applications;
  OneEach owners;
  FakeTimeZone zone;
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  FakeMachineState state;
  FixedAttention unwatched{false};
  TemporaryFolder folder;
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};
  std::unique_ptr<Queue> main = time.makeQueue("main");
  std::unique_ptr<AppModel> model;
  std::vector<int> scores;
  Subscription subscription;

  DayTests() {
    machine.machineFacts.logicalProcessors = cores;
    machine.memoryCounters = {16 * gigabyte, MemoryUse{.app = 4 * gigabyte}};
    machine.mountedVolumes = {{"Disk", "/", std::int64_t(1000 * gigabyte), std::int64_t(500 * gigabyte)}};
    for (int core = 0; core < cores; ++core) machine.cpuCounters.cores[core] = {};
  }

  void start() {
    Sampler::Subjects subjects;
    subjects.processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, cores);
    subjects.history = &history;
    subjects.zone = &zone;
    subjects.state = &state;
    subjects.alerts = std::make_unique<AlertEngine>(AlertEngine::Services{defaults, notifications},
                                                    std::string(linuxSystemGroup.key), cores);
    subjects.defaults = &defaults;
    subjects.notifications = &notifications;
    model = std::make_unique<AppModel>(
        *main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine, std::move(subjects)),
        unwatched, AppModel::Seams{&state, &defaults, &notifications});
    subscription =
        model->report.observe([this](const HealthReport& report) { scores.push_back(report.score); });
  }
  /// Ten seconds of work: cores kept busy by one process, ticks of the machine to match.
  void work(ProcessID pid, double busyCores) {
    table.processes.at(pid).counters.cpuTime += std::uint64_t(busyCores * 10e9);
    for (int core = 0; core < cores; ++core) {
      machine.cpuCounters.cores[core].user += std::uint64_t(1000 * busyCores / cores);
      machine.cpuCounters.cores[core].idle += std::uint64_t(1000 * (1 - busyCores / cores));
    }
  }
  void play(Seconds span, const std::function<void()>& everyTenSeconds) {
    for (int cycle = 0; cycle < int(span / Seconds(10)); ++cycle) {
      everyTenSeconds();
      time.advance(Seconds(10));
    }
  }
  /// Hours after the beginning at which alerts with this title came, the first one first.
  std::vector<double> hours(const std::string& title) const {
    std::vector<double> result;
    for (const auto& alert : *model->alerts)
      if (alert.title == title) result.insert(result.begin(), (alert.date - begin).count() / 3600);
    return result;
  }
};

TEST_F(DayTests, theBusyAndTheLeakingAreTold) {
  table.add(10, "busy");
  table.add(11, "leaky").counters.footprint = gigabyte;
  table.add(12, "quiet").counters.footprint = 8 * gigabyte;
  start();
  EXPECT_EQ(notifications.permissionRequests, 1);
  play(Seconds(24 * 3600), [&] {
    work(10, 1);
    work(12, 0.5);
    table.processes.at(11).counters.footprint += gigabyte / 200; // 1.8 GB an hour
  });
  const auto busy = hours("busy is keeping the CPU busy");
  EXPECT_EQ(busy.size(), 24u);
  for (size_t i = 1; i < busy.size(); ++i) EXPECT_NEAR(busy[i] - busy[i - 1], 1, 0.01);
  EXPECT_NEAR(busy.front(), 10.0 / 60, 0.02);
  const auto leaky = hours("leaky keeps using more memory");
  EXPECT_EQ(leaky.size(), 24u);
  EXPECT_NEAR(leaky.front(), 50.0 / 60, 0.02);
  EXPECT_EQ(model->alerts->size(), 48u) << "nobody else";
  EXPECT_EQ(notifications.posted.size(), 48u);
}

TEST_F(DayTests, theScoreFollowsTheLoadAndIsRecorded) {
  table.add(10, "build");
  start();
  play(Seconds(600), [&] { work(10, 0.4); });
  EXPECT_THAT(scores, testing::Each(100));
  // Ninety percent of the machine; the mean of ten minutes needs most of them to pass 80.
  play(Seconds(900), [&] { work(10, 3.6); });
  EXPECT_EQ(scores.back(), 85);
  EXPECT_EQ(model->report->insights.at(0).detail, "90% on average. build is the main load.");
  EXPECT_EQ(model->report->insights.at(0).action->name, "build");
  EXPECT_EQ(*model->menuBar.score, 85);
  state.thermal = ThermalState::serious;
  play(Seconds(60), [&] { work(10, 3.6); });
  EXPECT_EQ(scores.back(), 70);
  EXPECT_GT(state.refreshes, 10);
  state.thermal = ThermalState::nominal;
  play(Seconds(900), [&] { work(10, 0); });
  EXPECT_EQ(scores.back(), 100);
  const auto average = history.averageScore(begin);
  ASSERT_TRUE(average);
  EXPECT_GT(*average, 90);
  EXPECT_LT(*average, 99);
}

TEST_F(DayTests, theMenuBarShowsShares) {
  table.add(10, "build");
  defaults.set(menuBarStyleKey, "cpuAndMemory");
  start();
  play(Seconds(60), [&] { work(10, 1.7); });
  EXPECT_EQ(*model->menuBar.cpu, 42);    // 42.5
  EXPECT_EQ(*model->menuBar.memory, 25); // 4 of 16
  machine.memoryCounters.total = 0;
  play(Seconds(30), [&] { work(10, 1.7); });
  EXPECT_EQ(*model->menuBar.memory, 0);
}

TEST_F(DayTests, theWeeklyReportComesOnMonday) {
  defaults.set("weeklyReport.lastSent", begin);
  table.add(10, "quiet");
  start();
  play(Seconds(2 * 86'400), [&] { work(10, 0.1); });
  ASSERT_EQ(notifications.posted.size(), 1u);
  EXPECT_EQ(notifications.posted[0].identifier, "weekly-report");
  const auto sent = *defaults.date("weeklyReport.lastSent");
  EXPECT_GE(sent, *parseRFC3339("2026-03-02T09:00:00Z"));
  EXPECT_LE(sent, *parseRFC3339("2026-03-02T09:10:10Z"));
}

TEST_F(DayTests, aClockSetBackHoldsUpNothing) {
  table.add(10, "busy");
  start();
  play(Seconds(1200), [&] { work(10, 1); });
  EXPECT_EQ(hours("busy is keeping the CPU busy").size(), 1u);
  const int refreshes = state.refreshes;
  time.clock().setNow(begin - Seconds(86'400 * 30));
  play(Seconds(10), [&] { work(10, 1); });
  EXPECT_EQ(state.refreshes, refreshes + 1) << "due at once";
  play(Seconds(640), [&] { work(10, 1); });
  EXPECT_EQ(hours("busy is keeping the CPU busy").size(), 2u);
}

} // namespace
} // namespace korvell
