#include "Core/Health/SeenAlerts.h"
#include "Core/Health/WeeklyReport.h"
#include "UI/Alerts/AlertsPage.h"
#include "UI/Gallery/ListModel.h"
#include "UI/Servers/ServersPage.h"
#include "UI/Startup/StartupPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::SizeIs;

struct Pages : ListModel {
  std::set<SidebarItem> sections{SidebarItem::cpu, SidebarItem::memory, SidebarItem::storage};

  DevServer vite(int port, const char* project, const char* directory, double idleMinutes,
                 double megabytes = 10) const {
    return server("vite", project, directory, "node", {port}, megabytes, 0.2, {.idle = idleMinutes});
  }
  ServersPage servers() const { return serversPage(*this, "/home/u"); }
  AlertsPage alertsShown() const {
    return alertsPage(*this, {zone, defaults, sections, newAlertIDs(*this, defaults)});
  }
};

TEST(ListPageTests, serversSayHowLongTheyHaveBeenIdleAndWhatStoppingFrees) {
  Pages model;
  EXPECT_FALSE(model.servers().isMeasured) << "nobody has looked: \"no servers\" would be a guess";
  model.projects.set({{"herbarium",
                       {model.vite(3001, "herbarium", "/home/u/code/herbarium/web", 134, 690),
                        model.vite(3002, "herbarium", "/home/u/code/herbarium", 0.5, 88)}},
                      {"atlas", {model.vite(3003, "atlas", "/home/u/code/atlas", 30, 412)}}});
  auto page = model.servers();
  EXPECT_EQ(page.summary, "3 servers, 1.16 GB");
  EXPECT_EQ(page.idle, (ServersPage::Idle{"1 dev server is running but idle", "Stopping it frees 690 MB"}));
  const auto& project = page.projects.front();
  EXPECT_EQ(project.folderWords, "~/code/herbarium");
  EXPECT_EQ(project.memory, "778 MB");
  using enum ServersPage::Activity;
  const auto& first = project.servers[0];
  EXPECT_EQ(first.detail, "web · node");
  EXPECT_EQ(first.activity, idle);
  EXPECT_EQ(first.activityWords, "idle for 2 h 14 min");
  EXPECT_EQ(first.running, "3 h 2 min");
  EXPECT_EQ(first.stop, (StopServerRequest{3001, model.now - Seconds{3 * 3600 + 120}})) << "no other process";
  EXPECT_EQ(first.ports.front().address, "http://localhost:3001");
  EXPECT_EQ(project.servers[1].detail, "node") << "it is the project's own folder";
  EXPECT_EQ(project.servers[1].activity, active);
  const auto& atTheLimit = page.projects[1].servers[0];
  EXPECT_EQ(atTheLimit.activity, quiet);
  EXPECT_EQ(atTheLimit.activityWords, "quiet for 30 min");
  model.projects.set({});
  page = model.servers();
  EXPECT_TRUE(page.isMeasured);
  EXPECT_EQ(page.idle, std::nullopt);
  EXPECT_THAT(page.summary, IsEmpty());
}

TEST(ListPageTests, aProjectsFolderIsNamedOnlyWhereItIsKnown) {
  Pages model;
  const auto folders = [&](std::initializer_list<const char*> directories) {
    DevProject project{"atlas", {}};
    for (const auto* directory : directories)
      project.servers.push_back(model.vite(3001, "atlas", directory, 0));
    model.projects.set({project});
    return model.servers().projects.front();
  };
  EXPECT_EQ(folders({"/home/u/atlas/packages/atlas", "/home/u/atlas/web"}).folderWords, "~/atlas")
      << "a service may bear its project's name";
  const auto two = folders({"/home/u/old/atlas", "/home/u/new/atlas"});
  EXPECT_THAT(two.folders, ElementsAre("/home/u/old/atlas", "/home/u/new/atlas"));
  EXPECT_THAT(two.folderWords, IsEmpty());
  const auto nowhere = folders({"/home/u/other"});
  EXPECT_THAT(nowhere.folders, IsEmpty());
  EXPECT_EQ(nowhere.servers.front().detail, "node") << "nothing to tell its own folder from";
  EXPECT_EQ(folders({"/home/user/atlas"}).folderWords, "/home/user/atlas") << "not inside the home folder";
}

TEST(ListPageTests, projectsStayInPlaceUnlessOneComesOrGoes) {
  const auto page = [](std::initializer_list<const char*> names) {
    ServersPage made;
    for (const auto* name : names) made.projects.push_back({.name = name, .memory = "1 MB"});
    return made;
  };
  auto later = page({"b", "a"});
  later.projects[1].memory = "2 MB";
  const auto kept = settled(later, page({"a", "b"}));
  EXPECT_EQ(kept.projects[0], (ServersPage::Project{.name = "a", .memory = "2 MB"}))
      << "with its new figures";
  EXPECT_EQ(settled(page({"b", "c"}), page({"a", "b"})), page({"b", "c"}));
  EXPECT_EQ(settled(page({"b", "c", "a"}), page({"a", "b"})), page({"b", "c", "a"}));
}

TEST(ListPageTests, onlyLeftoversCanBeRemoved) {
  Pages model;
  EXPECT_FALSE(startupPage(model).isMeasured);
  model.startupItems.set({{.label = "gone",
                           .plistPath = "/p/gone",
                           .program = "/Applications/A.app/x",
                           .scope = LaunchScope::system,
                           .runsAtLoad = true,
                           .isLoaded = true,
                           .isLeftover = true},
                          {.label = "daemon", .plistPath = "/p/d", .scope = LaunchScope::system},
                          {.label = "agent",
                           .plistPath = "/p/a",
                           .program = "/Applications/B.app/y",
                           .keepAlive = true,
                           .isLoaded = true}});
  const auto page = startupPage(model);
  EXPECT_EQ(page.summary, "3 items, 1 leftover");
  ASSERT_THAT(page.groups, ElementsAre(Field(&StartupPage::Group::title, "Leftovers"),
                                       Field(&StartupPage::Group::title, "Your launch agents"),
                                       Field(&StartupPage::Group::title, "System daemons")));
  const auto& gone = page.groups[0].items.front();
  EXPECT_EQ(gone.state, "leftover");
  EXPECT_EQ(gone.program, "/Applications/A.app/x") << "which application is gone, its path says";
  EXPECT_EQ(gone.remove, (RemoveStartupItemRequest{"/p/gone", "gone", "/Applications/A.app/x"}));
  const auto& agent = page.groups[1].items.front();
  EXPECT_EQ(agent.spoken, "agent, Runs from inside its app, starts by itself, loaded");
  EXPECT_EQ(agent.remove, std::nullopt);
  EXPECT_EQ(page.groups[2].items.front().spoken, "daemon");
}

TEST(ListPageTests, startupItemsAreFilteredByNameAndPath) {
  Pages model;
  EXPECT_THAT(startupPage(model, "a").noMatch, IsEmpty()) << "nobody has looked";
  model.startupItems.set(
      {{.label = "org.Backup", .plistPath = "/p/one", .program = "/opt/x"},
       {.label = "sync", .plistPath = "/p/Two", .scope = LaunchScope::system},
       {.label = "gone", .plistPath = "/p/g", .program = "/opt/gone", .isLeftover = true}});
  const auto labels = [&](const char* filter) {
    std::vector<std::string> found;
    for (const auto& group : startupPage(model, filter).groups)
      for (const auto& item : group.items) found.push_back(item.label);
    return found;
  };
  EXPECT_THAT(labels("backup"), ElementsAre("org.Backup")) << "in any case";
  EXPECT_THAT(labels("/opt/"), ElementsAre("gone", "org.Backup")) << "by its program, leftovers first";
  EXPECT_THAT(labels("/p/t"), ElementsAre("sync")) << "by its file";
  const auto page = startupPage(model, "nowhere");
  EXPECT_THAT(page.groups, IsEmpty());
  EXPECT_EQ(page.noMatch, "No item has that in its name or path.");
  EXPECT_EQ(page.summary, "3 items, 1 leftover") << "what there is, whatever is shown of it";
  EXPECT_TRUE(page.hasItems && page.hasLeftovers);
}

TEST(ListPageTests, alertsStandByDayAndLeadToTheirMoment) {
  Pages model;
  using enum HealthAlert::Kind;
  model.alerts.set({model.alert(cpu, "T", "D.", "2026-11-19T13:58:00Z"),
                    model.alert(diskSpace, "T", "D.", "2026-11-19T00:00:00Z"),
                    model.alert(memoryGrowth, "T", "D.", "2026-11-18T23:59:59Z"),
                    model.alert(aiPlanLimit, "T", "D.", "2026-11-13T10:00:00Z"),
                    model.alert(cpu, "T", "D.", "2026-10-20T10:00:00Z")});
  ASSERT_TRUE(markSeen({&(*model.alerts)[2], 1}, model.defaults, model.now));
  const auto page = model.alertsShown();
  EXPECT_THAT(page.days, ElementsAre(Field(&AlertsPage::Day::title, "Today"),
                                     Field(&AlertsPage::Day::title, "Yesterday"),
                                     Field(&AlertsPage::Day::title, "Friday"),
                                     Field(&AlertsPage::Day::title, "2026-10-20")));
  EXPECT_EQ(page.summary, "2 new");
  const auto& today = page.days[0].alerts;
  ASSERT_THAT(today, SizeIs(2));
  EXPECT_EQ(today[0].lead, (AlertsPage::Lead{"Show CPU at 13:58", SidebarItem::cpu, today[0].lead->moment}));
  EXPECT_EQ(today[0].lead->moment, model.alerts->front().date);
  EXPECT_EQ(today[0].spoken, "New: T. D. Today, 13:58");
  EXPECT_EQ(today[1].lead, (AlertsPage::Lead{"Free Up Space", SidebarItem::storage, {}}));
  EXPECT_FALSE(page.days[1].alerts[0].isNew);
  EXPECT_EQ(page.days[2].alerts[0].lead, std::nullopt) << "there is no page of that";
  EXPECT_EQ(page.days[3].alerts[0].lead, std::nullopt) << "the history has forgotten it";
}

TEST(ListPageTests, switchesAndTheReportStandAsTheyAreKept) {
  Pages model;
  auto page = model.alertsShown();
  EXPECT_THAT(page.switches, SizeIs(7));
  for (const auto& each : page.switches) EXPECT_TRUE(each.isOn) << each.words;
  EXPECT_TRUE(page.sendsReport);
  EXPECT_FALSE(page.reportHint.empty());
  model.defaults.set("alert.network", false);
  model.defaults.set("alert.disk", "no"); // no switch: it is on
  ASSERT_TRUE(model.defaults.set(WeeklyReport::enabledKey, false));
  page = model.alertsShown();
  for (const auto& each : page.switches)
    EXPECT_EQ(each.isOn, each.kind != HealthAlert::Kind::network) << each.words;
  EXPECT_FALSE(page.sendsReport);
  EXPECT_THAT(page.reportHint, IsEmpty()) << "none will come";
  model.defaults.set(WeeklyReport::lastReportKey,
                     toValue(SentReport{*parseRFC3339("2026-11-16T09:00:00Z"), "Title", "Body"}));
  EXPECT_EQ(model.alertsShown().report, (AlertsPage::Report{"Title", "Body", "Monday 09:00"}));
}

} // namespace
} // namespace korvell
