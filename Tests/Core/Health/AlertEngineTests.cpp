#include "Core/Health/AlertEngine.h"

#include "Core/Health/AlertPosting.h"
#include "Core/Machine/Owners.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

struct AlertEngineTests : testing::Test {
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  int made = 0;
  std::optional<AlertEngine> engine;
  SystemSnapshot snapshot;
  double second = 0; ///< of the last call

  AlertEngineTests() {
    snapshot.disk.volumes = {{"Disk", "/", 1'000'000'000'000, 10'000'000'000}};
    restart();
  }
  void restart() {
    engine.emplace(
        AlertEngine::Services{defaults, notifications, [this] { return "id" + std::to_string(++made); }},
        std::string(linuxSystemGroup.key), 8);
    second = -10;
  }
  void setApp(const ProcessUsage& usage, std::string id = "/A.app", std::string name = "A") {
    std::erase_if(snapshot.apps, [&](const AppUsage& app) { return app.id == id; });
    snapshot.apps.push_back({.id = id, .name = name, .bundlePath = id, .processes = {usage}});
  }
  std::vector<HealthAlert> at(double when) {
    second = when;
    snapshot.date = Date{when};
    return engine->evaluate(snapshot);
  }
  /// What fires when called every ten seconds, from 0 on, up to and including `end`.
  std::vector<HealthAlert> until(double end) {
    std::vector<HealthAlert> fired;
    while (second + 10 <= end) std::ranges::move(at(second + 10), std::back_inserter(fired));
    return fired;
  }
};

TEST_F(AlertEngineTests, applicationAlertsAboveTheirThresholds) {
  const auto told = [this](const ProcessUsage& usage) {
    restart();
    setApp(usage);
    std::vector<std::string> texts;
    for (const auto& alert : until(1200))
      texts.push_back(std::to_string(int(alert.date.sinceEpoch)) + " s: " + alert.title + ": " +
                      alert.detail);
    return texts;
  };
  EXPECT_THAT(told({.cpu = 90}), IsEmpty()); // 90 percent of a core is 11.25 percent of eight
  EXPECT_THAT(
      told({.cpu = 90.4}),
      ElementsAre("600 s: A is keeping the CPU busy: 11% of your Mac, about 0.9 cores, for 10 minutes."));
  EXPECT_THAT(told({.diskRead = 2e7, .diskWrite = 3e7}), IsEmpty());
  EXPECT_THAT(told({.diskRead = 2e7, .diskWrite = 3.1e7}),
              ElementsAre("300 s: A is hammering the disk: 51 MB/s on average for 5 minutes."));
  EXPECT_THAT(told({.netIn = 1e7, .netOut = 1e7}), IsEmpty());
  EXPECT_THAT(told({.netIn = 1.1e7, .netOut = 1e7}),
              ElementsAre("300 s: A is using a lot of network: 21 MB/s on average for 5 minutes."));
}

TEST_F(AlertEngineTests, theWindowMayLackTwentySecondsOfTheTenMinutes) {
  setApp({.cpu = 800});
  for (const auto& [end, fires] : {std::pair(579.0, false), std::pair(580.0, true)}) {
    restart();
    at(0);
    EXPECT_EQ(at(end).size(), fires) << end;
  }
}

TEST_F(AlertEngineTests, memoryGrowthComparesTheEndsOfTheHour) {
  const auto told = [this](std::uint64_t first, std::uint64_t last, double span) {
    restart();
    setApp({.memory = first});
    at(0);
    setApp({.memory = 9'000'000'000}); // a peak in between
    at(1'000);
    setApp({.memory = last});
    const auto fired = at(span);
    return fired.empty() ? "" : fired[0].detail;
  };
  EXPECT_EQ(told(1'500'000'000, 2'500'000'000, 3'001), "") << "just a gigabyte";
  EXPECT_EQ(told(900'000'000, 2'000'000'000, 3'001), "") << "not large yet";
  EXPECT_EQ(told(4'100'000'000, 3'000'000'000, 3'001), "") << "shrinking";
  EXPECT_EQ(told(3'000'000'000, 4'000'000'001, 3'000), "") << "not long enough";
  EXPECT_EQ(told(3'000'000'000, 4'000'000'001, 3'001), "Up 954 MB in an hour, now 3.73 GB.");
}

TEST_F(AlertEngineTests, theMachineItself) {
  EXPECT_THAT(at(0), IsEmpty()) << "10,000,000,000 bytes free";
  snapshot.disk.volumes[0].available = 9'999'999'999;
  EXPECT_THAT(at(30), ElementsAre(HealthAlert{.id = "id1",
                                              .kind = HealthAlert::Kind::diskSpace,
                                              .title = "Disk is almost full",
                                              .detail = "10.0 GB left.",
                                              .date = Date{30}}));
  snapshot.memory.pressure = MemoryStats::Pressure::warning;
  EXPECT_THAT(at(60), IsEmpty());
  snapshot.memory.pressure = MemoryStats::Pressure::critical;
  EXPECT_THAT(at(90), SizeIs(1));
  ASSERT_THAT(notifications.posted, SizeIs(2));
  EXPECT_EQ(notifications.posted[1],
            (Notification{"id2", "Your Mac is running out of memory",
                          "Memory pressure is critical. Quitting the heaviest app will help most.",
                          Notification::Urgency::critical}));
  snapshot.disk.volumes.clear();
  snapshot.memory.pressure = {};
  EXPECT_THAT(at(90 + 3600), IsEmpty());
}

TEST_F(AlertEngineTests, evaluatesEveryThirtySecondsButRecordsInBetween) {
  at(0);
  setApp({.diskRead = 1e9});
  at(10); // the first sample of the application
  snapshot.disk.volumes[0].available = 0;
  EXPECT_THAT(at(29), IsEmpty());
  EXPECT_THAT(at(30), SizeIs(1));
  EXPECT_THAT(until(290), IsEmpty());
  EXPECT_THAT(at(300), SizeIs(1)) << "the sample at 10 counts, the one at 30 alone would be too young";
}

TEST_F(AlertEngineTests, anAlertRestsForAnHourEachKeyByItself) {
  setApp({.cpu = 200, .diskRead = 1e8});
  setApp({.cpu = 200}, "/B.app", "B");
  std::map<std::string, std::vector<double>> times;
  for (const auto& alert : until(2 * 3600 + 900)) times[alert.title].push_back(alert.date.sinceEpoch);
  const auto busy = times["A is keeping the CPU busy"];
  ASSERT_THAT(busy, SizeIs(3));
  EXPECT_EQ(busy[1] - busy[0], 3600);
  EXPECT_EQ(times["B is keeping the CPU busy"], busy);
  EXPECT_THAT(times["A is hammering the disk"], SizeIs(3));
}

TEST_F(AlertEngineTests, switchesDecideAndRestNothing) {
  setApp({.cpu = 200});
  defaults.set("alert.cpu", false);
  EXPECT_THAT(until(1200), IsEmpty());
  EXPECT_THAT(notifications.posted, IsEmpty());
  defaults.set("alert.cpu", "a text is no switch");
  EXPECT_THAT(until(1240), SizeIs(1)) << "nothing has been resting";
  const HealthAlert alert{.kind = HealthAlert::Kind::aiPlanLimit, .title = "Codex"};
  EXPECT_TRUE(post(alert, defaults, notifications));
  defaults.set("alert.aiPlanLimit", false);
  EXPECT_FALSE(post(alert, defaults, notifications));
  EXPECT_THAT(notifications.titles(), ElementsAre("A is keeping the CPU busy", "Codex"));
}

TEST_F(AlertEngineTests, theSystemIsKnownByItsKeyNotByItsName) {
  setApp({.cpu = 800}, "system", "Linux");
  setApp({.cpu = 800}, "proc:Linux", "Linux");
  EXPECT_THAT(until(700), ElementsAre(testing::Field(&HealthAlert::appName, "Linux")));
}

TEST_F(AlertEngineTests, whoQuitsIsForgotten) {
  setApp({.cpu = 800});
  EXPECT_THAT(until(500), IsEmpty());
  auto apps = std::exchange(snapshot.apps, {});
  until(510);
  snapshot.apps = std::move(apps);
  EXPECT_THAT(until(1'090), IsEmpty());
  EXPECT_THAT(until(1'130), SizeIs(1));
}

TEST_F(AlertEngineTests, aClockSetBackStartsAgainAtOnce) {
  setApp({.cpu = 800});
  snapshot.disk.volumes[0].available = 0;
  EXPECT_THAT(until(700), SizeIs(2));
  EXPECT_THAT(at(-2'000), IsEmpty()) << "corrected by less than an hour";
  EXPECT_THAT(at(-100'000), SizeIs(1)) << "the disk is still full; the busy minutes lie in the future";
  EXPECT_THAT(until(-100'000 + 570), IsEmpty());
  EXPECT_THAT(until(-100'000 + 610), SizeIs(1));
}

TEST_F(AlertEngineTests, aWindowNeverGrowsBeyondItsHour) {
  SampleWindow window;
  for (int i = 0; i < 5'000; ++i) window.add({.date = {double(i) * 3}, .cpu = double(i)}); // too often
  EXPECT_EQ(window.size(), SampleWindow::most);
  EXPECT_EQ(window.newest().cpu, 4'999);
  EXPECT_EQ(window.oldest().cpu, 5'000 - double(SampleWindow::most));
  window.add({.date = {100'000}});
  EXPECT_EQ(window.size(), 1u);
}

} // namespace
} // namespace korvell
