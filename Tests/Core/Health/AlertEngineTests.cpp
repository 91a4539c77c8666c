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
  double second = 0;

  AlertEngineTests() {
    snapshot.disk.volumes = {{"Disk", "/", 1'000'000'000'000, 10'000'000'000}};
    restart();
  }
  void restart() {
    engine.emplace(
        AlertEngine::Services{defaults, notifications, [this] { return "id" + std::to_string(++made); }},
        std::string(linuxSystemGroup.key), 8);
    second = 0;
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
  /// What fires when called every ten seconds up to and including `end`.
  std::vector<HealthAlert> until(double end) {
    std::vector<HealthAlert> fired;
    while (second + 10 <= end) std::ranges::move(at(second + 10), std::back_inserter(fired));
    return fired;
  }
};

TEST_F(AlertEngineTests, applicationAlertsAboveTheirThresholds) {
  const struct {
    ProcessUsage threshold, above;
    double first; ///< second of the first alert
    const char* text;
  } rows[] = {// 90 percent of a core is 11.25 percent of eight.
              {{.cpu = 90},
               {.cpu = 90.4},
               600,
               "keeping the CPU busy | 11% of your Mac, about 0.9 cores, for 10 minutes."},
              {{.diskRead = 2e7, .diskWrite = 3e7},
               {.diskRead = 2e7, .diskWrite = 3.1e7},
               300,
               "hammering the disk | 51 MB/s on average for 5 minutes."},
              {{.netIn = 1e7, .netOut = 1e7},
               {.netIn = 1.1e7, .netOut = 1e7},
               300,
               "using a lot of network | 21 MB/s on average for 5 minutes."}};
  for (const auto& row : rows) {
    restart();
    setApp(row.threshold);
    EXPECT_THAT(until(1200), IsEmpty()) << row.text;
    restart();
    setApp(row.above);
    const auto fired = until(1200);
    ASSERT_THAT(fired, SizeIs(1)) << row.text;
    EXPECT_EQ(fired[0].title + " | " + fired[0].detail, std::string("A is ") + row.text);
    EXPECT_NEAR(fired[0].date.sinceEpoch, row.first, 30) << row.text;
  }
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
  const struct {
    const char* name;
    std::uint64_t first, last;
    double span;
    std::vector<std::string> details;
  } rows[] = {{"a gigabyte", 1'500'000'000, 2'500'000'000, 3'001, {}},
              {"not large yet", 900'000'000, 2'000'000'000, 3'001, {}},
              {"a byte more", 3'000'000'000, 4'000'000'001, 3'001, {"Up 954 MB in an hour, now 3.73 GB."}},
              {"not long enough", 3'000'000'000, 4'000'000'001, 3'000, {}}};
  for (const auto& row : rows) {
    restart();
    setApp({.memory = row.first});
    at(0);
    setApp({.memory = 9'000'000'000}); // a peak in between
    at(1'000);
    setApp({.memory = row.last});
    std::vector<std::string> details;
    for (const auto& alert : at(row.span)) details.push_back(alert.detail);
    EXPECT_EQ(details, row.details) << row.name;
  }
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
  EXPECT_THAT(until(700), SizeIs(1));
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
