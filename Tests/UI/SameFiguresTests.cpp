// What the screen shows and what commands tell as JSON, of one moment: the same figures and names, section by
// section. The JSON's numbers are set by Format's rules here, without the views' own way to them.

#include "App/JSONDocuments.h"
#include "Base/Format.h"
#include "Core/Health/SeenAlerts.h"
#include "UI/AIUsage/AIUsagePage.h"
#include "UI/Alerts/AlertsPage.h"
#include "UI/Gallery/MadeUp.h"
#include "UI/Measures/AppList.h"
#include "UI/Measures/MeasurePage.h"
#include "UI/Overview/HealthPage.h"
#include "UI/Panel/PanelPage.h"
#include "UI/Sensors/SensorsPage.h"
#include "UI/Servers/ServersPage.h"
#include "UI/Sound/SoundPage.h"
#include "UI/Startup/StartupPage.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace korvell {
namespace {

using testing::SizeIs;

struct SameFiguresTests : testing::Test {
  MadeUp model = usualMachine();
  const Measurement measurement{.snapshot = *model->snapshot,
                                .known = *model->known,
                                .report = *model->report,
                                .privileged = {},
                                .historyProblem = {}};
  const Value status = statusValue(measurement, {});

  static const Value& at(const Value& value, std::initializer_list<const char*> path) {
    const auto* found = &value;
    for (const auto* name : path) {
      found = found->find(name);
      if (!found) throw std::out_of_range(name);
    }
    return *found;
  }
  static double number(const Value& value, std::initializer_list<const char*> path) {
    return at(value, path).asDouble().value();
  }
  static std::string word(const Value& value, const char* name) { return *at(value, {name}).asString(); }
  double measured(std::initializer_list<const char*> path) const {
    return number(at(status, {"snapshot"}), path);
  }
  MeasurePage page(Metric metric) const { return measurePage(*model, metric, {}); }
  static std::string joined(const Figure& figure) {
    return figure.number + (figure.unit == "%" || figure.unit.empty() ? "" : " ") + figure.unit;
  }
  static std::string fact(const MeasurePage& page, const char* caption) {
    for (const auto& each : page.facts)
      if (each.caption == caption) return joined(each.figure);
    return std::string("no ") + caption;
  }
};

TEST_F(SameFiguresTests, health) {
  const auto shown = healthPage(*model, {.zone = model->zone, .weekScore = {}, .hasBatterySettings = true});
  EXPECT_EQ(double(*shown.head.score), number(status, {"score"}));
  EXPECT_EQ(shown.head.label, word(status, "label"));
  const auto& insights = *at(status, {"insights"}).asArray();
  ASSERT_THAT(shown.head.findings, SizeIs(insights.size()));
  for (std::size_t i = 0; i < insights.size(); ++i) {
    EXPECT_EQ(shown.head.findings[i].title, word(insights[i], "title"));
    EXPECT_EQ(shown.head.findings[i].detail, word(insights[i], "detail"));
    EXPECT_EQ(shown.head.findings[i].penalty, number(insights[i], {"penalty"}));
  }
  const auto panel = panelPage(*model, UsageKey::memory, {}, true);
  EXPECT_EQ(panel.head.score, shown.head.score);
}

TEST_F(SameFiguresTests, measures) {
  EXPECT_EQ(joined(page(Metric::cpu).now), Format::percent(measured({"cpu", "total"})));
  EXPECT_EQ(fact(page(Metric::cpu), "User"), Format::percent(measured({"cpu", "user"})));
  EXPECT_EQ(fact(page(Metric::cpu), "System"), Format::percent(measured({"cpu", "system"})));
  const auto used =
      measured({"memory", "app"}) + measured({"memory", "wired"}) + measured({"memory", "compressed"});
  EXPECT_EQ(joined(page(Metric::memory).now), Format::memory(used));
  EXPECT_EQ(fact(page(Metric::memory), "Swap in use"), Format::memory(measured({"memory", "swapUsed"})));
  EXPECT_EQ(joined(page(Metric::disk).now), Format::rate(measured({"disk", "readRate"})));
  EXPECT_EQ(fact(page(Metric::disk), "Written"), Format::rate(measured({"disk", "writeRate"})));
  const auto& volumes = *at(status, {"snapshot", "disk", "volumes"}).asArray();
  const auto disk = page(Metric::disk);
  ASSERT_TRUE(disk.volumes);
  ASSERT_THAT(*disk.volumes, SizeIs(volumes.size()));
  for (std::size_t i = 0; i < volumes.size(); ++i) {
    EXPECT_EQ((*disk.volumes)[i].name, word(volumes[i], "name"));
    EXPECT_EQ((*disk.volumes)[i].free, Format::bytes(number(volumes[i], {"available"})) + " of " +
                                           Format::bytes(number(volumes[i], {"total"})) + " free");
  }
  EXPECT_EQ(joined(page(Metric::network).now), Format::rate(measured({"network", "inRate"})));
  EXPECT_EQ(fact(page(Metric::network), "Up"), Format::rate(measured({"network", "outRate"})));
  EXPECT_EQ(joined(page(Metric::gpu).now), Format::percent(measured({"gpu", "utilization"})));
  EXPECT_EQ(joined(page(Metric::energy).now), Format::percent(measured({"battery", "percent"})));
}

TEST_F(SameFiguresTests, applications) {
  const auto top = topValue(UsageKey::cpu, model->snapshot->apps, {}, measurement);
  const auto& apps = *at(top, {"apps"}).asArray();
  const auto rows = [&](Metric metric) {
    AppListChoices choices;
    choices.sorted = BarTableData::Column::figure;
    return appList(*model, metric, choices, {}).table.rows;
  };
  struct Column {
    Metric metric;
    Unit unit;
    const char *figure, *second;
  };
  const Column columns[] = {{Metric::cpu, Unit::corePercent, "cpu", nullptr},
                            {Metric::memory, Unit::memory, "memory", nullptr},
                            {Metric::disk, Unit::bytesPerSecond, "diskRead", "diskWrite"},
                            {Metric::network, Unit::bytesPerSecond, "netIn", "netOut"}};
  for (const auto& column : columns) {
    const auto shown = rows(column.metric);
    ASSERT_THAT(shown, SizeIs(apps.size()));
    for (const auto& app : apps) {
      const auto row = std::ranges::find(shown, word(app, "id"), &BarRow::key);
      ASSERT_NE(row, shown.end());
      EXPECT_EQ(row->name, word(app, "name"));
      EXPECT_EQ(row->figure, Format::figure(column.unit, number(app, {column.figure}))) << row->name;
      if (!column.second) continue;
      EXPECT_EQ(row->second, Format::figure(column.unit, number(app, {column.second}))) << row->name;
    }
  }
}

TEST_F(SameFiguresTests, serversAndStartupItems) {
  const auto now = model->now();
  model->projects.set({{"atlas",
                        {{.pid = 12,
                          .name = "vite",
                          .project = "atlas",
                          .directory = "/home/u/atlas",
                          .runtime = "node",
                          .ports = {5173, 8000},
                          .memory = 432'013'312,
                          .cpu = 6.83,
                          .startedAt = now - Seconds{4'000},
                          .lastActive = now}}}});
  const auto servers = serversValue(*model->projects, true);
  const auto& project = at(servers, {"projects"}).asArray()->front();
  const auto& server = at(project, {"servers"}).asArray()->front();
  const auto shown = serversPage(*model, "/home/u").projects.front();
  EXPECT_EQ(shown.name, word(project, "name"));
  const auto& row = shown.servers.front();
  EXPECT_EQ(row.name, word(server, "name"));
  EXPECT_EQ(row.memory, Format::memory(number(server, {"memory"})));
  EXPECT_EQ(row.cpu, Format::figure(Unit::corePercent, number(server, {"cpu"})));
  const auto& ports = *at(server, {"ports"}).asArray();
  ASSERT_THAT(row.ports, SizeIs(ports.size()));
  for (std::size_t i = 0; i < ports.size(); ++i) EXPECT_EQ(row.ports[i].number, ports[i].asInt());
  model->startupItems.set({{.label = "a.b", .plistPath = "/p", .program = "/bin/x", .isLeftover = true}});
  const auto startup = startupItemsValue(*model->startupItems);
  const auto& item = at(startup, {"items"}).asArray()->front();
  const auto listed = startupPage(*model).groups.front().items.front();
  EXPECT_EQ(listed.label, word(item, "label"));
  EXPECT_EQ(listed.program, word(item, "program"));
}

TEST_F(SameFiguresTests, batteryAndSensors) {
  model->sensors.set(SensorsSnapshot{.cpuCelsius = 61.4, .gpuCelsius = 47.5});
  const auto battery = page(Metric::energy);
  EXPECT_EQ(fact(battery, "Power"), Format::watts(measured({"battery", "systemPower"})));
  EXPECT_EQ(fact(battery, "Health"), Format::percent(measured({"battery", "health"})));
  EXPECT_EQ(fact(battery, "Time left"),
            Format::duration(Seconds{60 * measured({"battery", "minutesRemaining"})}));
  const auto told = sensorsValue(**model->sensors, *model->peripherals);
  const auto shown = sensorsPage(*model, TemperatureUnit::celsius);
  ASSERT_THAT(shown.leads, SizeIs(2));
  EXPECT_EQ(shown.leads[0].figure.number + "°C", Format::celsius(number(told, {"cpuCelsius"})));
  EXPECT_EQ(shown.leads[1].figure.number + "°C", Format::celsius(number(told, {"gpuCelsius"})));
}

TEST_F(SameFiguresTests, alertsAndPlans) {
  const auto unseen = newAlerts(*model->alerts, model->defaults, model->now());
  const auto told = alertsValue(*model->alerts, unseen);
  const auto shown = alertsPage(*model, {.zone = model->zone,
                                         .defaults = model->defaults,
                                         .sections = {},
                                         .fresh = newAlertIDs(*model, model->defaults)});
  EXPECT_EQ(shown.summary, std::to_string(at(told, {"new"}).asInt().value()) + " new");
  std::vector<std::string> titles, rows;
  for (const auto& alert : *at(told, {"alerts"}).asArray()) titles.push_back(word(alert, "title"));
  for (const auto& day : shown.days)
    for (const auto& alert : day.alerts) rows.push_back(alert.title);
  EXPECT_EQ(rows, titles);

  AIUsageSummary usage;
  usage.updatedAt = model->now();
  usage.rows.push_back({.day = startOfDay(model->zone, localDay(model->zone, model->now())),
                        .tool = AITool::codex,
                        .model = "m",
                        .project = "p",
                        .tokens = {1, 2, 3, 4},
                        .cost = {}});
  usage.codexLimits = AICodexLimits{.date = model->now(),
                                    .plan = "plus",
                                    .primary = AIPlanLimit{84.6, 10'080, model->now() + Seconds{9'000}},
                                    .secondary = AIPlanLimit{37, 300, model->now() + Seconds{900}}};
  const auto limits = at(planLimitsValue(usage), {"codexLimits"});
  const auto plan = aiUsagePage(usage, {.zone = model->zone, .now = model->now()}).plan;
  ASSERT_THAT(plan.limits, SizeIs(2));
  const char* parts[] = {"primary", "secondary"};
  for (std::size_t i = 0; i < 2; ++i)
    EXPECT_EQ(plan.limits[i].level, number(limits, {parts[i], "usedPercent"}) / 100);
}

TEST_F(SameFiguresTests, sounds) {
  SoundState state{.connection = SoundConnection::connected};
  state.apps = {{.key = "a", .name = "Meeting", .volume = 1.3, .playing = true, .isRemembered = true},
                {.key = "b", .name = "Music", .volume = 0.6, .muted = true, .playing = true}};
  state.output = OutputDevice{.name = "Speakers", .volume = 0.65};
  const auto told = toValue(state);
  const auto shown = soundPage(state);
  EXPECT_EQ(shown.output->percent, 100 * number(told, {"output", "volume"}));
  const auto& apps = *at(told, {"apps"}).asArray();
  ASSERT_THAT(shown.apps, SizeIs(apps.size()));
  for (std::size_t i = 0; i < apps.size(); ++i) {
    EXPECT_EQ(shown.apps[i].name, word(apps[i], "name"));
    EXPECT_EQ(shown.apps[i].percent, 100 * number(apps[i], {"volume"}));
    EXPECT_EQ(shown.apps[i].isMuted, at(apps[i], {"muted"}).asBool());
  }
}

} // namespace
} // namespace korvell
