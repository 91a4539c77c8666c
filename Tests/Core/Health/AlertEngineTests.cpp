#include "Core/Health/AlertEngine.h"

#include "Core/Health/AlertPosting.h"
#include "Core/Machine/Owners.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = HealthAlert::Kind;

struct Figures {
  double cpu = 0; ///< percent of one core
  double memory = 0;
  double disk = 0;
  double network = 0;
};

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
  }

  void setApp(const Figures& figures, std::string id = "/A.app", std::string name = "A") {
    std::erase_if(snapshot.apps, [&](const AppUsage& app) { return app.id == id; });
    // Two processes: an application's figure is the sum.
    const ProcessUsage half{.cpu = figures.cpu / 2,
                            .memory = std::uint64_t(figures.memory) / 2,
                            .diskRead = figures.disk / 2,
                            .netOut = figures.network / 2};
    const ProcessUsage rest{.cpu = figures.cpu / 2,
                            .memory = std::uint64_t(figures.memory) - std::uint64_t(figures.memory) / 2,
                            .diskWrite = figures.disk / 2,
                            .netIn = figures.network / 2};
    snapshot.apps.push_back({.id = id, .name = name, .bundlePath = id, .processes = {half, rest}});
  }
  std::vector<HealthAlert> at(double when) {
    second = when;
    snapshot.date = {1'800'000'000 + when};
    return engine->evaluate(snapshot);
  }
  /// Seconds at which something fired when called every ten seconds up to and including `until`.
  std::vector<std::pair<double, std::string>> until(double end) {
    std::vector<std::pair<double, std::string>> fired;
    for (double next = second + 10; next <= end; next += 10)
      for (const auto& alert : at(next)) fired.emplace_back(next, alert.title + " | " + alert.detail);
    return fired;
  }
};

TEST_F(AlertEngineTests, applicationAlertsAtTheirThresholds) {
  struct Row {
    Figures figures;
    double first; ///< second of the first alert
    std::string text;
  };
  // 90 percent of a core is 11.25 percent of eight. Each row has a twin at its threshold, which does not
  // fire.
  const std::string onAverage = " on average for 5 minutes.";
  const std::pair<Row, Figures> rows[] = {
      {{{.cpu = 90.4}, 600, "keeping the CPU busy | 11% of your Mac, about 0.9 cores, for 10 minutes."},
       {.cpu = 90}},
      {{{.disk = 50'000'002}, 300, "hammering the disk | 50 MB/s" + onAverage}, {.disk = 50'000'000}},
      {{{.network = 20'000'002}, 300, "using a lot of network | 20 MB/s" + onAverage},
       {.network = 20'000'000}}};
  const auto firedWith = [this](const Figures& figures) {
    restart();
    setApp(figures);
    second = 0;
    return until(1200);
  };
  for (const auto& [row, twin] : rows) {
    const auto fired = firedWith(row.figures);
    ASSERT_EQ(fired.size(), 1u) << row.text;
    EXPECT_EQ(fired[0].second, "A is " + row.text);
    EXPECT_NEAR(fired[0].first, row.first, 30) << row.text;
    EXPECT_THAT(firedWith(twin), IsEmpty()) << row.text;
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
  struct Row {
    const char* name;
    double first, last;
    bool fires;
  };
  const Row rows[] = {{"a byte more than a gigabyte", 1'000'000'000, 2'000'000'001, true},
                      {"a gigabyte", 1'500'000'000, 2'500'000'000, false},
                      {"not large yet", 900'000'000, 2'000'000'000, false},
                      {"large and larger", 3'000'000'000, 4'100'000'000, true},
                      {"shrinking", 4'100'000'000, 3'000'000'000, false}};
  for (const auto& row : rows)
    for (const auto& [span, covers] : {std::pair(3'000.0, false), std::pair(3'001.0, true)}) {
      restart();
      setApp({.memory = row.first});
      at(0);
      setApp({.memory = 9e9}); // a peak in between
      at(1'000);
      setApp({.memory = row.last});
      const auto fired = at(span);
      EXPECT_EQ(fired.size(), row.fires && covers) << row.name << " after " << span;
      if (!fired.empty() && row.last == 4'100'000'000) {
        EXPECT_EQ(fired[0].title, "A keeps using more memory");
        EXPECT_EQ(fired[0].detail, "Up 1.02 GB in an hour, now 3.82 GB.");
      }
    }
}

TEST_F(AlertEngineTests, machineAlerts) {
  EXPECT_THAT(at(0), IsEmpty()) << "10,000,000,000 bytes free";
  snapshot.disk.volumes[0].available = 9'999'999'999;
  auto fired = at(30);
  ASSERT_EQ(fired.size(), 1u);
  EXPECT_EQ(fired[0], (HealthAlert{.id = "id1",
                                   .kind = Kind::diskSpace,
                                   .title = "Disk is almost full",
                                   .detail = "10.0 GB left.",
                                   .date = snapshot.date}));
  snapshot.memory.pressure = MemoryStats::Pressure::warning;
  EXPECT_THAT(at(60), IsEmpty());
  snapshot.memory.pressure = MemoryStats::Pressure::critical;
  fired = at(90);
  ASSERT_EQ(fired.size(), 1u);
  EXPECT_EQ(fired[0].title, "Your Mac is running out of memory");
  EXPECT_EQ(fired[0].detail, "Memory pressure is critical. Quitting the heaviest app will help most.");
  ASSERT_EQ(notifications.posted.size(), 2u);
  EXPECT_EQ(notifications.posted[1],
            (Notification{fired[0].id, fired[0].title, fired[0].detail, Notification::Urgency::critical}));
  snapshot.disk.volumes.clear();
  snapshot.memory.pressure = {};
  EXPECT_THAT(at(90 + 3600), IsEmpty());
}

TEST_F(AlertEngineTests, evaluatesEveryThirtySecondsButRecordsInBetween) {
  at(0);
  setApp({.disk = 1e9});
  at(10); // the first sample of the application
  snapshot.disk.volumes[0].available = 0;
  EXPECT_THAT(at(29), IsEmpty());
  EXPECT_EQ(at(30).size(), 1u);
  for (double next = 50; next < 285; next += 20) at(next);
  EXPECT_EQ(at(290 + 20).size(), 1u) << "280 seconds since the sample at 10 are covered";
}

TEST_F(AlertEngineTests, anAlertRestsForAnHourEachKeyByItself) {
  setApp({.cpu = 200, .disk = 1e8});
  setApp({.cpu = 200}, "/B.app", "B");
  const auto fired = until(2 * 3600 + 900);
  std::map<std::string, std::vector<double>> times;
  for (const auto& [when, text] : fired) times[text.substr(0, text.find(" |"))].push_back(when);
  const auto busy = times["A is keeping the CPU busy"];
  ASSERT_EQ(busy.size(), 3u);
  EXPECT_NEAR(busy[1] - busy[0], 3600, 30);
  EXPECT_GE(busy[1] - busy[0], 3600);
  EXPECT_EQ(times["B is keeping the CPU busy"], busy);
  EXPECT_EQ(times["A is hammering the disk"].size(), 3u);
}

TEST_F(AlertEngineTests, switchesDecideAndRestNothing) {
  setApp({.cpu = 200});
  defaults.set("alert.cpu", false);
  EXPECT_THAT(until(1200), IsEmpty());
  EXPECT_THAT(notifications.posted, IsEmpty());
  defaults.set("alert.cpu", "a text is no switch");
  EXPECT_EQ(until(1240).size(), 1u) << "nothing has been resting";
  const HealthAlert alert{.id = "x", .kind = Kind::aiPlanLimit, .title = "Codex", .detail = "Resets"};
  EXPECT_TRUE(post(alert, defaults, notifications));
  defaults.set("alert.aiPlanLimit", false);
  EXPECT_FALSE(post(alert, defaults, notifications));
  EXPECT_THAT(notifications.titles(), ElementsAre("A is keeping the CPU busy", "Codex"));
}

TEST_F(AlertEngineTests, theSystemIsToldByItsKey) {
  setApp({.cpu = 800}, "system", "Linux");
  setApp({.cpu = 800}, "proc:macOS", "macOS");
  setApp({.cpu = 800}, "proc:Linux", "Linux");
  std::vector<std::string> names;
  for (const auto& [when, text] : until(700)) names.push_back(text.substr(0, text.find(" is")));
  EXPECT_THAT(names, testing::UnorderedElementsAre("macOS", "Linux"));
}

TEST_F(AlertEngineTests, whoQuitsIsForgotten) {
  setApp({.cpu = 800});
  EXPECT_THAT(until(500), IsEmpty());
  auto apps = std::exchange(snapshot.apps, {});
  until(510);
  snapshot.apps = std::move(apps);
  EXPECT_THAT(until(1'090), IsEmpty());
  EXPECT_EQ(until(1'130).size(), 1u);
}

TEST_F(AlertEngineTests, aClockSetBackStartsAgainAtOnce) {
  setApp({.cpu = 800});
  snapshot.disk.volumes[0].available = 0;
  EXPECT_EQ(until(700).size(), 2u);
  EXPECT_THAT(at(-2'000), IsEmpty()) << "corrected by less than an hour";
  EXPECT_EQ(at(-100'000).size(), 1u) << "the disk is still full; the busy minutes lie in the future";
  EXPECT_THAT(until(-100'000 + 570), IsEmpty());
  EXPECT_EQ(until(-100'000 + 610).size(), 1u);
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
