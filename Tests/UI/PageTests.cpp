#include "UI/Gallery/MadeUp.h"
#include "UI/Overview/HealthPage.h"
#include "UI/Panel/PanelPage.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/TopApps.h"
#include "UI/Share/ShareCard.h"
#include "UI/Window/Sidebar.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace korvell {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto unknown = [](const Figure& figure) { return figure == Figure{"–", ""}; };

HealthPage page(const MadeUpModel& model, std::optional<double> weekScore = {}) {
  return healthPage(model, {.zone = model.zone, .weekScore = weekScore, .hasBatterySettings = true});
}

const Tile& tile(const HealthPage& page, SidebarItem section) {
  return *std::ranges::find(page.tiles, section, &Tile::section);
}

std::string joined(const Figure& figure) { return figure.number + "|" + figure.unit; }

TEST(PageTests, healthSaysWhatWasLostAndWhatGivesItBack) {
  const auto model = usualMachine();
  const auto shown = page(*model, 83.6);
  EXPECT_EQ(shown.head.name, "Health 87 of 100, Good. 13 points lost to 3 findings.");
  EXPECT_EQ(shown.head.average, "84 on average over 7 days");
  EXPECT_EQ(shown.updated, "Updated 15:42:08");
  EXPECT_THAT(shown.reassurance, IsEmpty());
  ASSERT_THAT(shown.head.findings, SizeIs(3));
  const auto& first = shown.head.findings.front();
  EXPECT_EQ(first.tone, Tone::warning);
  EXPECT_EQ(first.name, "Warning, 8 points: Disk space is getting low. 41.2 GB free on System disk.");
  EXPECT_EQ(first.fix, (Step{"Free Up Space", SidebarItem::storage}));
  EXPECT_FALSE(shown.head.findings[1].fix->leadsOn()) << "stopping asks";
  EXPECT_THAT(shown.alerts, ElementsAre(Field(&HealthPage::Alert::time, "Today, 13:58"),
                                        Field(&HealthPage::Alert::time, "Today, 11:26")));
  EXPECT_EQ(page(*model).head.average, "") << "not known yet";
}

TEST(PageTests, beforeTheSecondSampleNothingIsAFigure) {
  const auto model = startingMachine();
  model->report.set(madeUpReport({})); // what a report says before is no finding
  const auto shown = page(*model);
  EXPECT_EQ(shown.head.score, std::nullopt);
  EXPECT_EQ(shown.head.loss, "Measuring…");
  EXPECT_THAT(shown.reassurance, IsEmpty()) << "nothing was measured that could be well";
  EXPECT_THAT(shown.updated, IsEmpty());
  EXPECT_THAT(shown.tiles, SizeIs(6));
  for (const auto& tile : shown.tiles) {
    EXPECT_PRED1(unknown, tile.figure) << tile.title;
    EXPECT_EQ(tile.name, tile.title + ", Measuring…");
  }
  for (const auto& total : shown.today) EXPECT_PRED1(unknown, total.figure) << total.title;
  EXPECT_THAT(shown.apps, IsEmpty());
  SidebarFacts facts{.sections = {SidebarItem::overview, SidebarItem::cpu}};
  for (const auto& group : sidebar(*model, SidebarItem::overview, facts).groups)
    EXPECT_THAT(group.rows, Each(Field(&Sidebar::Row::value, IsEmpty())));
}

TEST(PageTests, aScoreIsProvisionalUntilTheTenMinuteAverage) {
  const auto model = healthyMachine();
  EXPECT_EQ(page(*model).head.label, "Excellent");
  EXPECT_EQ(page(*model).head.loss, "Nothing to fix");
  EXPECT_EQ(page(*model).reassurance, "Everything that was measured is within its limits.");
  model->know(KnownPart::tenMinuteAverage, Knowledge::absent);
  EXPECT_EQ(page(*model).head.label, "Excellent so far");
}

TEST(PageTests, aPenaltyAboveAHundredLosesAHundred) {
  const auto model = troubledMachine();
  const auto shown = page(*model);
  EXPECT_EQ(shown.head.score, 0);
  EXPECT_EQ(shown.head.loss, "100 points lost to 8 findings");
  const auto panel = panelPage(*model, UsageKey::memory, {}, true);
  EXPECT_EQ(panel.more, "5 more");
  EXPECT_THAT(panel.head.findings, SizeIs(8)) << "the ring has an arc for each";
  model->change(model->report, [](HealthReport& report) {
    report.insights.resize(4);
    report.insights[0].penalty = 1;
  });
  EXPECT_EQ(panelPage(*model, UsageKey::memory, {}, true).more, "1 more");
  model->report.set(madeUpReport({madeUpInsight(Insight::Severity::info, 1, "One", "")}));
  EXPECT_EQ(page(*model).head.loss, "1 point lost to 1 finding");
}

TEST(PageTests, aButtonIsThereOnlyForWhatCanBeDone) {
  using Kind = Insight::Action::Kind;
  const auto model = healthyMachine();
  const auto fix = [&](Insight::Action action, bool hasBatterySettings) {
    model->report.set(madeUpReport({madeUpInsight(Insight::Severity::warning, 10, "t", "d", action)}));
    return panelPage(*model, UsageKey::cpu, {}, hasBatterySettings).head.findings.front().fix;
  };
  EXPECT_EQ(fix({Kind::openBatterySettings}, false), std::nullopt) << "this desktop has none";
  EXPECT_EQ(fix({Kind::openBatterySettings}, true)->words, "Battery Settings");
  EXPECT_EQ(fix({Kind::quitApp}, true), std::nullopt) << "no application to quit";
  const auto quit = fix({Kind::quitApp, "/usr/share/applications/blender.desktop", "Blender"}, true);
  EXPECT_EQ(*quit,
            (Step{"Quit Blender…",
                  ActionRequest(QuitRequest{.bundlePath = "/usr/share/applications/blender.desktop"})}));
  const std::string name(70, 'w');
  EXPECT_EQ(fix({Kind::quitApp, "/a", name}, true)->words, "Quit…") << "it would push all else away";
}

TEST(PageTests, tilesShowWhatIsKnownAndSayWhyNot) {
  const auto usual = usualMachine();
  const auto all = page(*usual);
  EXPECT_EQ(joined(tile(all, SidebarItem::memory).figure), "9.84|GB");
  EXPECT_EQ(tile(all, SidebarItem::memory).caption, "of 15.6 GB · Normal");
  EXPECT_EQ(tile(all, SidebarItem::cpu).name, "CPU, 24 percent, steady over 5 minutes");
  EXPECT_EQ(tile(all, SidebarItem::energy).caption, "9.6 W · 4 h 12 min left");
  EXPECT_EQ(tile(all, SidebarItem::disk).caption, "41.2 GB free");
  const auto model = bareMachine();
  const auto bare = page(*model);
  EXPECT_PRED1(unknown, tile(bare, SidebarItem::gpu).figure);
  EXPECT_EQ(tile(bare, SidebarItem::gpu).name, "GPU, Not measured on this machine");
  EXPECT_EQ(tile(bare, SidebarItem::disk).caption, "41.2 GB free") << "the volumes are known";
  EXPECT_PRED1(unknown, tile(bare, SidebarItem::disk).figure);
  EXPECT_EQ(tile(bare, SidebarItem::energy).title, "Power");
  EXPECT_EQ(tile(bare, SidebarItem::energy).caption, "This machine has no battery.");
  EXPECT_EQ(tile(bare, SidebarItem::energy).reason, "Not readable without further rights");
}

TEST(PageTests, aSeriesIsDrawnWhereItWasMeasured) {
  const auto model = usualMachine();
  const auto ofCPU = [&](std::vector<HistoryPoint> points) {
    model->change(model->live, [&](LiveSeries& live) { live[Metric::cpu] = std::move(points); });
    return tile(page(*model), SidebarItem::cpu);
  };
  const auto at = [&](double ago, double value) { return HistoryPoint{model->now() - Seconds(ago), value}; };
  const auto rising = ofCPU({at(299, 20), at(150, 21), at(0, 24)});
  EXPECT_EQ(rising.name, "CPU, 24 percent, rising over 5 minutes");
  EXPECT_EQ(rising.values.front(), 20);
  EXPECT_EQ(rising.values[4], 20) << "at the slow pace a reading stands for the ones after it";
  EXPECT_EQ(rising.values[10], std::nullopt) << "a longer silence is a gap";
  EXPECT_EQ(rising.values.back(), 24);
  const auto young = ofCPU({at(20, 5), at(0, 24)});
  EXPECT_EQ(young.name, "CPU, 24 percent") << "nobody knows of the last five minutes";
  EXPECT_EQ(young.values.front(), std::nullopt);
  EXPECT_EQ(ofCPU({at(299, 30), at(0, 24)}).name, "CPU, 24 percent, falling over 5 minutes");
  EXPECT_EQ(ofCPU({}).values, std::vector<std::optional<double>>(60));
}

TEST(PageTests, appsAreSortedAndTellZeroFromUnknown) {
  const auto model = usualMachine();
  const auto shown = page(*model).apps;
  ASSERT_THAT(shown, SizeIs(7));
  EXPECT_EQ(shown[0].spoken, "Firefox, 23 processes, 61.8 percent of one core, 3.12 gigabytes");
  EXPECT_EQ(joined(shown[1].network), "0|B/s");
  EXPECT_THAT(shown[1].note, IsEmpty());
  EXPECT_DOUBLE_EQ(shown[0].level, 1);
  model->know(KnownPart::processTraffic, Knowledge::refused);
  EXPECT_PRED1(unknown, page(*model).apps[1].network);
  EXPECT_EQ(page(*model).apps[1].note, "The system does not tell the traffic of each app.");

  model->change(model->snapshot, [](SystemSnapshot& s) {
    s.apps = {madeUp({"Linux", 214, 0, 0}), madeUp({"Idle", 1, 0, 0})};
  });
  model->privileged.set(PrivilegedUse{.told = 0, .hidden = 100});
  const auto idle = panelPage(*model, UsageKey::memory, {}, true).apps;
  EXPECT_THAT(idle, Each(Field(&AppRow::level, 0))) << "nothing to measure against";
  EXPECT_EQ(idle[0].name, "Idle") << "equal ones by name";
  EXPECT_EQ(joined(idle[0].disk), "0|B/s");
  EXPECT_TRUE(idle[1].isSystem);
  EXPECT_PRED1(unknown, idle[1].disk) << "what other users' processes read is hidden";
}

TEST(PageTests, rowsStayWhereSomebodyPointsAtThem) {
  const auto rows = [](const std::string& names) {
    std::vector<AppRow> result;
    for (const char name : names) result.push_back({.id = std::string(1, name)});
    return result;
  };
  const auto ids = [&](const std::string& now, const std::string& before) {
    std::string result;
    for (const auto& row : settled(rows(now), rows(before))) result += row.id;
    return result;
  };
  EXPECT_EQ(ids("bcad", "abcd"), "abcd");
  EXPECT_EQ(ids("xbya", "abcd"), "abxy") << "new ones take the places that became free, the greatest first";
  EXPECT_EQ(ids("dc", "abcd"), "dc") << "their places are gone";
  EXPECT_EQ(ids("ab", ""), "ab");
}

TEST(PageTests, aSharedCardNamesNothingOfItsOwners) {
  EXPECT_EQ(shareCard(*startingMachine(), MadeUpZone()), std::nullopt);
  const auto model = usualMachine();
  auto report = *model->report;
  using Action = Insight::Action;
  report.insights = {madeUpInsight(Insight::Severity::critical, 9, "Ann's Stick is almost full", ""),
                     madeUpInsight(Insight::Severity::warning, 8, "Blender holds Blenders; Blender", "",
                                   Action{Action::Kind::quitApp, {}, "Blender"}),
                     madeUpInsight(Insight::Severity::info, 3, "Slow is Ann's Stick", ""),
                     madeUpInsight(Insight::Severity::info, 1, "1 leftover startup items", "")};
  model->report.set(report);
  model->change(model->snapshot, [](SystemSnapshot& snapshot) {
    auto volume = snapshot.disk.volumes.front();
    volume.name = "Ann's Stick";
    snapshot.disk.volumes.push_back(volume);
  });
  const auto card = shareCard(*model, model->zone);
  ASSERT_TRUE(card);
  ASSERT_THAT(card->findings, SizeIs(3));
  EXPECT_EQ(card->findings[0].title, "The disk is almost full");
  EXPECT_EQ(card->findings[1].title, "An app holds Blenders; an app");
  EXPECT_EQ(card->findings[2].title, "Slow is the disk");
  EXPECT_EQ(card->more, "1 more");
  EXPECT_THAT(card->lost, SizeIs(4));
  EXPECT_EQ(card->tiles[1].figure, (Figure{"63", "%"}));
  EXPECT_EQ(card->tiles[2].figure, (Figure{"41.2", "GB"}));
  const auto bare = shareCard(*bareMachine(), model->zone);
  ASSERT_TRUE(bare);
  for (const auto& tile : bare->tiles) EXPECT_FALSE(unknown(tile.figure)) << tile.title;
}

TEST(PageTests, onlyWhatIsKorvellsAloneWearsItsHeart) {
  AppUsage app{.id = "k", .name = "Korvell", .bundlePath = {}, .mainPID = {}, .processes = {}};
  EXPECT_FALSE(isKorvell(app));
  ProcessUsage process;
  process.path = "/usr/bin/korvell-app";
  app.processes.push_back(process);
  process.path.clear();
  process.name = "Korvell";
  app.processes.push_back(process);
  EXPECT_TRUE(isKorvell(app));
  process.path = "/usr/bin/bash"; // a terminal in which Korvell runs
  app.processes.push_back(process);
  EXPECT_FALSE(isKorvell(app));
}

TEST(PageTests, todayIsKnownOnceSomethingIsRecorded) {
  const auto model = usualMachine();
  model->totals.set({.cpuToday = 31, .networkToday = 0});
  EXPECT_EQ(joined(page(*model).today[2].figure), "0|B") << "nothing was sent";
  model->totals.set({});
  for (const auto& total : page(*model).today) {
    EXPECT_PRED1(unknown, total.figure) << total.title;
    EXPECT_EQ(total.reason, "Nothing was recorded today.");
  }
  model->historyProblem.set(HistoryProblem{.detail = "The disk is full."});
  EXPECT_EQ(page(*model).today[0].reason, "The disk is full.");
}

TEST(PageTests, theSidebarShowsOnlySectionsThatHaveAPage) {
  const auto model = usualMachine();
  SidebarFacts facts{.sections = {SidebarItem::overview, SidebarItem::sensors, SidebarItem::startup,
                                  SidebarItem::alerts, SidebarItem::network},
                     .newAlerts = 2};
  const auto shown = sidebar(*model, SidebarItem::network, facts);
  ASSERT_THAT(shown.groups,
              ElementsAre(Field(&Sidebar::Group::title, ""), Field(&Sidebar::Group::title, "Measures"),
                          Field(&Sidebar::Group::title, "System")));
  EXPECT_EQ(shown.selected, SidebarItem::network);
  EXPECT_EQ(shown.groups[0].rows[0].name, "Health, 87, Warning");
  EXPECT_EQ(shown.groups[1].rows[0].value, "1.9 MB/s");
  const auto& system = shown.groups[2].rows;
  EXPECT_EQ(system[0].value, "58°C");
  EXPECT_EQ(system[1].tone, Tone::info);
  EXPECT_EQ(system[2].name, "Alerts, 2 new");
  facts.temperatures = TemperatureUnit::fahrenheit;
  EXPECT_EQ(sidebar(*model, SidebarItem::network, facts).groups[2].rows[0].value, "136°F");
  model->sensors.set(std::nullopt);
  model->startupItems.set({});
  const auto quiet = sidebar(*model, SidebarItem::network, facts).groups[2].rows;
  EXPECT_EQ(quiet[0].value + quiet[1].value, "") << "nothing is no figure";
}

TEST(PageTests, datesAreReadAsPeopleSayThem) {
  const MadeUpZone zone;
  const auto now = *parseRFC3339("2026-11-15T00:10:00Z");
  const auto said = [&](const char* date) { return dayAndTime(zone, *parseRFC3339(date), now); };
  EXPECT_EQ(said("2026-11-15T00:00:00Z"), "Today, 00:00");
  EXPECT_EQ(said("2026-11-14T23:59:59Z"), "Yesterday, 23:59");
  EXPECT_EQ(said("2026-11-09T08:05:00Z"), "Monday, 08:05");
  EXPECT_EQ(said("2026-11-08T08:05:00Z"), "2026-11-08, 08:05") << "last Sunday would be read as today";
  EXPECT_EQ(said("2026-11-16T08:05:00Z"), "2026-11-16, 08:05") << "the clock was set back";
}

} // namespace
} // namespace korvell
