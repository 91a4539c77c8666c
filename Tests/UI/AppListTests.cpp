#include "Tests/UI/MeasureFixture.h"

using namespace testing;

namespace korvell {
namespace {

using Column = BarTableData::Column;
using AppListTests = MeasureFixture;

TEST_F(AppListTests, theListSortsFiltersAndUnfolds) {
  auto busy = app("busy", {});
  for (int i = 0; i < 15; ++i) busy.processes.push_back({.pid = 500 + i, .name = "worker", .cpu = 5.0 + i});
  model.step(snapshot(start, 40, {app("idle", {0, 0}), busy, app("Middle", {20})}));
  AppListChoices choices;
  const auto list = [&] { return appList(model, Metric::cpu, choices, {}); };
  EXPECT_THAT(names(list()), ElementsAre("busy", "Middle", "idle"));
  EXPECT_EQ(list().table.rows[1].level, 20.0 / 180);
  EXPECT_EQ(list().table.rows[0].spoken, "busy, 15 processes, 180.0 percent of one core, 0 bytes");

  choices.unfolded = {"busy"};
  const auto unfolded = list();
  ASSERT_EQ(unfolded.table.rows.size(), 3 + mostProcesses + 1);
  EXPECT_EQ(unfolded.table.rows[1].name, "worker · 514");
  EXPECT_EQ(unfolded.table.rows[mostProcesses + 1].name, "3 more");
  EXPECT_EQ(unfolded.table.rows[mostProcesses + 1].figure, "18.0%");
  choices.unfolded.clear();

  choices.filter = "MID";
  EXPECT_THAT(names(list()), ElementsAre("Middle"));
  EXPECT_EQ(list().table.rows[0].level, 20.0 / 180) << "against all, not against what is found";
  choices.filter = "nothing";
  EXPECT_EQ(list().empty, "No app is called that.");
  choices.filter.clear();

  choices.sorted = Column::name;
  choices.isAscending = true;
  EXPECT_THAT(names(list()), ElementsAre("busy", "idle", "Middle"));

  // Under the pointer nothing moves; what is new comes last.
  choices = {.settled = {"idle", "busy"}};
  EXPECT_THAT(names(list()), ElementsAre("idle", "busy", "Middle"));
}

TEST_F(AppListTests, listsSayWhatTheyLeaveOut) {
  model.step(snapshot(start, 40, {app("browser", {1})}));
  const auto note = [&](Metric metric) { return appList(model, metric, {}, {"TCP only."}).note; };
  EXPECT_EQ(note(Metric::network), "TCP only.");
  EXPECT_EQ(note(Metric::gpu), "No figure per app exists for the GPU.");
  EXPECT_FALSE(appList(model, Metric::gpu, {}, {}).isThere);
  EXPECT_EQ(note(Metric::disk), "");
  model.privileged.set(PrivilegedUse{.told = 0, .hidden = 3});
  EXPECT_EQ(note(Metric::disk), "The system does not tell you what other users' processes read and write.");
  EXPECT_TRUE(appList(model, Metric::disk, {}, {}).helperWouldTell);
  EXPECT_FALSE(appList(model, Metric::cpu, {}, {}).helperWouldTell);

  // The sums of the system's group leave out what is hidden: 0 is no figure of it.
  auto now = snapshot(start, 40, {app("browser", {1}), app(std::string(linuxSystemGroup.key), {1, 2})});
  model.step(now);
  const AppListChoices unfolded{.unfolded = {std::string(linuxSystemGroup.key)}};
  const auto disk = appList(model, Metric::disk, unfolded, {}).table;
  for (const auto& row : disk.rows) {
    const bool isSystem = row.key.starts_with(linuxSystemGroup.key);
    EXPECT_EQ(row.figure, isSystem ? "–" : "0 B/s") << row.name;
    EXPECT_EQ(row.level.has_value(), !isSystem) << row.name;
  }
  EXPECT_NE(disk.reason, "");
  now.apps[1].processes[0].diskRead = 4096;
  model.step(now);
  EXPECT_EQ(appList(model, Metric::disk, {}, {}).table.rows[0].figure, "4.1 KB/s");
  EXPECT_EQ(appList(model, Metric::cpu, unfolded, {}).table.rows[0].figure, "3.0%");
  model.forget(KnownPart::processTraffic);
  EXPECT_EQ(note(Metric::network), "The system does not tell the traffic of each app.");
  EXPECT_EQ(appList(model, Metric::network, {}, {}).table.rows[0].figure, "–");
  EXPECT_EQ(appList(model, Metric::network, {}, {}).table.rows[0].level, std::nullopt);
}

TEST_F(AppListTests, onlyWhatIsThereIsAskedToQuit) {
  auto now = snapshot(start, 1, {app("editor", {1, 2}), app(std::string(linuxSystemGroup.key), {1})});
  model.step(now);
  const auto asked = [&](const std::string& key) {
    const auto request = quitRequest(model, key, true);
    return request && request->force ? request->app.value_or("nobody") : "no request";
  };
  EXPECT_EQ(asked("editor"), "editor");
  EXPECT_EQ(asked("editor\n101"), "101");
  EXPECT_EQ(asked("editor\n102"), "no request");
  EXPECT_EQ(asked("editor\n"), "no request") << "the rest of the processes is no process";
  EXPECT_EQ(asked("edit"), "no request");
  EXPECT_EQ(asked(std::string(linuxSystemGroup.key)), "no request");
  EXPECT_EQ(asked(std::string(linuxSystemGroup.key) + "\n100"), "no request");
  EXPECT_EQ(processOf(model, "editor"), model.snapshot->apps.front().processes.front().pid);
  EXPECT_EQ(processOf(model, "editor\n101"), 101);
  EXPECT_EQ(processOf(model, "editor\n"), std::nullopt);
  EXPECT_EQ(processOf(model, "editor\n102"), std::nullopt);
  EXPECT_EQ(processOf(model, "gone"), std::nullopt);
}

TEST_F(AppListTests, aHueIsAnApplicationsAlone) {
  const std::string system(linuxSystemGroup.key);
  model.step(snapshot(start, 1, {app("editor", {2}), app(system, {1})}));
  const auto hues = [](const AppList& list) {
    std::vector<std::string> result;
    for (const auto& row : list.table.rows) result.push_back(row.identifier);
    return result;
  };
  EXPECT_THAT(hues(appList(model, Metric::cpu, {}, {})), ElementsAre("editor", ""));
  const PastApps past{{{"editor", {}, 2}, {system, {}, 1}, {"gone", {}, 0.5}}};
  EXPECT_THAT(hues(pastAppList(model, Metric::cpu, past, {}, {})), ElementsAre("editor", "", "gone"));
}

TEST_F(AppListTests, aFilterSaysWhatItLeavesOfThePast) {
  std::vector<AppTotal> totals;
  for (int i = 0; i < 30; ++i) totals.push_back({"app " + std::to_string(i), {}, 100.0 - i});
  AppListChoices choices;
  const auto list = [&] { return pastAppList(model, Metric::cpu, {totals}, choices, {}); };
  EXPECT_EQ(list().table.rows.size(), mostPastApps);
  choices.filter = "29";
  EXPECT_THAT(names(list()), ElementsAre("app 29")) << "there is no room for it without a filter";
  choices.filter = "nothing";
  EXPECT_EQ(list().empty, "No app is called that.");
  choices = {.settled = {"app 3", "app 2"}};
  EXPECT_THAT(names(list()), AllOf(Contains("app 0"), Each(Not("app 29"))));
  EXPECT_EQ(list().table.rows[0].name, "app 3");
}

TEST_F(AppListTests, rowsStayUnderThePointerAlsoWhenTheirOrderWasChosenThere) {
  const auto step = [&](double a, double b) {
    model.step(snapshot(start, 40, {app("a", {a}), app("b", {b})}));
  };
  step(2, 1);
  const auto session = open(Metric::cpu);
  session->settle(true);
  step(1, 2);
  EXPECT_THAT(names(session->list()), ElementsAre("a", "b"));
  session->sort(Column::name);
  session->sort(Column::figure); // by the largest
  EXPECT_THAT(names(session->list()), ElementsAre("b", "a"));
  step(9, 1);
  EXPECT_THAT(names(session->list()), ElementsAre("b", "a"));
  session->settle(false);
  EXPECT_THAT(names(session->list()), ElementsAre("a", "b"));
}

TEST_F(AppListTests, anotherListUnderThePointerHasItsOwnOrder) {
  record(0, 30, 50, {app("mail", {20})});
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5}), app("mail", {1})}));
  const auto session = open(Metric::cpu, HistoryRange::h12);
  scheduler.run();
  session->point(start);
  scheduler.run();
  session->settle(true); // from the chart to the list: the moment's rows stand there a little longer
  session->point(std::nullopt);
  EXPECT_THAT(names(session->list()), ElementsAre("now", "mail"));
  model.step(snapshot(scheduler.clock().now(), 10, {app("now", {5}), app("mail", {9})}));
  EXPECT_THAT(names(session->list()), ElementsAre("now", "mail")) << "which it keeps";
}

} // namespace
} // namespace korvell
