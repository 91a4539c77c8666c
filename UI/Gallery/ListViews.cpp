// The pages of servers, sensors, startup items and alerts, each over a made-up machine.

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Core/AIUsage/PlanLimitAlerts.h"
#include "Core/Health/WeeklyReport.h"
#include "UI/Alerts/AlertsView.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/ListModel.h"
#include "UI/Gallery/PageFrame.h"
#include "UI/Sensors/SensorsView.h"
#include "UI/Servers/ServersView.h"
#include "UI/Startup/StartupView.h"

#include <QLineEdit>

namespace korvell {

namespace {

const char* const longName = "com.example.a-background-program-with-a-name-that-no-list-has-room-for.updater";

using Made = std::unique_ptr<QWidget>;
using Machine = std::shared_ptr<ListModel>;

// Servers

const std::string code = "/home/u/code/";

Machine serving() {
  auto made = std::make_shared<ListModel>();
  const auto& m = *made;
  made->projects.set(
      {{"herbarium",
        {m.server("node", "herbarium", code + "herbarium/web", "node", {3000}, 690, 0.2, {134, 182}),
         m.server("postgres", "herbarium", code + "herbarium/db", "postgres", {5432}, 88.2, 1.4, {0, 411})}},
       {"atlas",
        {m.server("vite", "atlas", code + "atlas/web", "node", {5173}, 412, 6.8, {0, 97}),
         m.server("uvicorn", "atlas", code + "atlas/api", "python", {8000}, 268, 0.1, {47, 96})}},
       {"field-notes",
        {m.server("astro", "field-notes", code + "field-notes/site", "node", {4321}, 301, 2.2, {12, 24})}}});
  return made;
}

Machine servingMuch() {
  auto made = serving();
  auto projects = *made->projects;
  const auto& m = *made;
  const std::string name = "a-project-whose-name-is-longer-than-the-list-is-wide-and-then-some-more-of-it";
  projects.push_back(
      {name,
       {m.server("a-server-with-a-name-that-does-not-end", name, code + "clients/" + name + "/packages/back",
                 "beam", {4000, 4001, 4369, 9000}, 12'300, 812.4, {60'000, 70'000}),
        m.server("bun", name, code + "other", "bun", {10'001, 10'002}, 9.41, 0, {0.2, 0.1})}});
  made->projects.set(projects);
  return made;
}

Made servers(const Theme& theme, const Machine& machine) {
  return std::make_unique<PageFrame>(theme, machine,
                                     new ServersView({.model = *machine,
                                                      .theme = theme,
                                                      .home = "/home/u",
                                                      .ask = [](const ActionRequest&) {},
                                                      .openAddress = [](const std::string&) {},
                                                      .showFolder = [](const std::string&) {}},
                                                     nullptr));
}

// Startup items

Machine starting(bool hasLeftovers, int more = 0) {
  auto made = std::make_shared<ListModel>();
  std::vector<StartupItem> items;
  if (hasLeftovers) {
    items.push_back({.label = "com.example.sketchpad.updater",
                     .plistPath = "/p/1",
                     .program = "/opt/sketchpad/bin/sketchpad-updater",
                     .runsAtLoad = true,
                     .isLeftover = true});
    items.push_back({.label = longName,
                     .plistPath = "/p/2",
                     .program = std::string("/opt/") + longName + "/" + longName,
                     .scope = LaunchScope::allUsers,
                     .isLeftover = true});
  }
  items.push_back({.label = "nightly-backup",
                   .plistPath = "/p/3",
                   .program = "/home/u/bin/nightly-backup",
                   .runsAtLoad = true,
                   .isLoaded = true});
  items.push_back({.label = "com.example.notes.sync",
                   .plistPath = "/p/4",
                   .program = "/Applications/Notes.app/Contents/MacOS/sync",
                   .keepAlive = true,
                   .isLoaded = true});
  items.push_back({.label = "org.example.keyring", .plistPath = "/p/5", .scope = LaunchScope::allUsers});
  for (int i = 0; i < 6 + more; ++i)
    items.push_back({.label = "service-" + std::to_string(i),
                     .plistPath = "/p/s" + std::to_string(i),
                     .program = "/usr/libexec/service-" + std::to_string(i),
                     .scope = LaunchScope::system,
                     .runsAtLoad = i % 2 == 0,
                     .isLoaded = i % 3 != 0});
  made->startupItems.set(items);
  return made;
}

Machine startingNothing() {
  auto made = std::make_shared<ListModel>();
  made->startupItems.set({});
  made->projects.set({});
  return made;
}

Made startup(const Theme& theme, const Machine& machine) {
  return std::make_unique<PageFrame>(theme, machine,
                                     new StartupView({.model = *machine,
                                                      .theme = theme,
                                                      .ask = [](const ActionRequest&) {},
                                                      .showFile = [](const std::string&) {}},
                                                     nullptr));
}

Made startupFiltered(const Theme& theme, const Machine& machine) {
  auto page = startup(theme, machine);
  page->findChild<QLineEdit*>()->setText("sync");
  return page;
}

Made startupUnmatched(const Theme& theme, const Machine& machine) {
  auto page = startup(theme, machine);
  page->findChild<QLineEdit*>()->setText("nothing");
  return page;
}

// Sensors

Machine sensing() {
  auto made = std::make_shared<ListModel>();
  using enum SensorKind;
  SensorsSnapshot read{.cpuCelsius = 61.4, .gpuCelsius = 47, .socCelsius = std::nullopt};
  read.fans = {{"nct6798 fan2", "CPU fan", 1171, 300, 2100},
               {"nct6798 fan3", "Case fan 1", 847},
               {"amdgpu fan1", "amdgpu Fan 1", 0, 0, 3300}};
  read.temperatures = {{"Tctl", 61.4, cpu, "k10temp"},
                       {"CPUTIN", 40.5, cpu, "nct6798"},
                       {"edge", 47, gpu, "amdgpu"},
                       {"junction", 52, gpu, "amdgpu"},
                       {"Tccd1", 52.3, other, "k10temp"},
                       {"Tccd2", 50, other, "k10temp"},
                       {"mem", 56, other, "amdgpu"},
                       {"SYSTIN", 34, other, "nct6798"},
                       {"PECI Agent 0", 61, other, "nct6798"},
                       {"Composite", 40.9, other, "nvme nvme0"},
                       {"Sensor 2", 8, other, "nvme nvme0"},
                       {"A sensor with a label that no column has room for", 115, other,
                        "a-driver-with-a-long-name 0000:03:00.0"}};
  made->sensors.set(std::move(read));
  return made;
}

Machine sensingNothing() {
  auto made = std::make_shared<ListModel>();
  made->sensors.set(SensorsSnapshot{});
  return made;
}

Made sensors(const Theme& theme, const Machine& machine) {
  return std::make_unique<PageFrame>(
      theme, machine,
      new SensorsView({.model = *machine, .defaults = machine->defaults, .theme = theme}, nullptr));
}

Made sensorsInFahrenheit(const Theme& theme, const Machine& machine) {
  machine->defaults.set(temperatureUnitKey, "fahrenheit");
  return sensors(theme, machine);
}

// Alerts

Machine alerting(bool hasReport = true) {
  auto made = std::make_shared<ListModel>();
  const auto& m = *made;
  using enum HealthAlert::Kind;
  made->alerts.set(
      {m.alert(cpu, localized("{app} is keeping the CPU busy", {{"app", "Blender"}}),
               localized("{n}% of your Mac, about {c} cores, for 10 minutes.",
                         {{"n", "78"}, {"c", Format::decimal(6.2, 1)}}),
               "2026-11-19T13:58:00Z"),
       m.alert(aiPlanLimit,
               localized("Codex {limit} limit at {percent}%",
                         {{"limit", localized("Weekly")}, {"percent", "84"}}),
               localized("Resets {time}.",
                         {{"time", resetText(made->zone, *parseRFC3339("2026-11-23T09:00:00Z"))}}),
               "2026-11-19T11:26:00Z"),
       m.alert(memoryGrowth, localized("{app} keeps using more memory", {{"app", "Firefox"}}),
               localized("Up {growth} in an hour, now {memory}.",
                         {{"growth", Format::bytes(1.32e9)}, {"memory", Format::bytes(4.87e9)}}),
               "2026-11-18T18:03:00Z"),
       m.alert(disk, localized("{app} is hammering the disk", {{"app", "Files"}}),
               localized("{rate} on average for 5 minutes.", {{"rate", Format::rate(112e6)}}),
               "2026-11-16T10:41:00Z"),
       m.alert(memoryPressure, localized("Your Mac is running out of memory"),
               localized("Memory pressure is critical. Quitting the heaviest app will help most."),
               "2026-11-16T10:12:00Z"),
       m.alert(network,
               localized("{app} is using a lot of network",
                         {{"app", "An application with a name that is far longer than any row of any list"}}),
               localized("{rate} on average for 5 minutes.", {{"rate", Format::rate(34e6)}}),
               "2026-11-02T08:00:00Z")});
  made->defaults.set("alerts.lastSeen", Value(*parseRFC3339("2026-11-19T00:00:00Z")));
  made->defaults.set("alert.network", false);
  if (hasReport)
    made->defaults.set(
        WeeklyReport::lastReportKey,
        toValue(SentReport{*parseRFC3339("2026-11-16T09:00:00Z"),
                           localized("Your Mac last week: {score} out of 100", {{"score", "84"}}),
                           localized("{name} used the most memory, {size} on average.",
                                     {{"name", "Firefox"}, {"size", Format::bytes(2.94e9)}}) +
                               " " + localized("{name} kept the CPU busiest.", {{"name", "Blender"}}) + " " +
                               localized("You cleaned up {size}.", {{"size", Format::bytes(18.2e9)}})}));
  return made;
}

Machine quiet() {
  auto made = alerting(false);
  made->alerts.set({});
  return made;
}

Made alerts(const Theme& theme, const Machine& machine) {
  std::set<SidebarItem> sections;
  for (const auto& item : allCases<SidebarItem>()) sections.insert(item.value);
  return std::make_unique<PageFrame>(theme, machine,
                                     new AlertsView({.model = *machine,
                                                     .theme = theme,
                                                     .zone = machine->zone,
                                                     .defaults = machine->defaults,
                                                     .sections = std::move(sections),
                                                     .ask = [](const ActionRequest&) {},
                                                     .open = [](SidebarItem) {},
                                                     .showMoment = [](SidebarItem, Date) {},
                                                     .see = [] {}},
                                                    nullptr));
}

const QSize usual{884, 760}, low{664, 526}, wide{1184, 760};

GalleryView view(std::string name, Made (*make)(const Theme&, const Machine&),
                 std::function<Machine()> machine, std::vector<QSize> sizes = {usual}) {
  return {std::move(name), std::move(sizes),
          [=](const Theme& theme) -> Made { return make(theme, machine()); }};
}

} // namespace

std::vector<GalleryView> listViews() {
  const auto unmeasured = [] { return std::make_shared<ListModel>(); };
  return {
      view("dev-servers", servers, serving, {usual, low, wide}),
      view("dev-servers-long", servers, servingMuch, {usual, low}),
      view("dev-servers-none", servers, startingNothing, {usual, low}),
      view("dev-servers-first-seconds", servers, unmeasured),
      view("sensors", sensors, sensing, {usual, low, wide}),
      view("sensors-fahrenheit", sensorsInFahrenheit, sensing),
      view("sensors-none", sensors, sensingNothing, {usual, low}),
      view("sensors-first-seconds", sensors, unmeasured),
      view("startup", startup, [] { return starting(true); }, {usual, low, wide}),
      view("startup-no-leftovers", startup, [] { return starting(false, 60); }),
      view("startup-filtered", startupFiltered, [] { return starting(true); }, {usual, low}),
      view("startup-unmatched", startupUnmatched, [] { return starting(true); }),
      view("startup-none", startup, startingNothing),
      view("startup-first-seconds", startup, unmeasured),
      view("alerts", alerts, [] { return alerting(); }, {usual, low, wide}),
      view("alerts-none", alerts, quiet, {usual, low}),
  };
}

} // namespace korvell
