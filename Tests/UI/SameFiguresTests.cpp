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
#include "UI/Storage/StoragePage.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
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

TEST_F(SameFiguresTests, coresAndTotals) {
  model->change(model->snapshot, [](SystemSnapshot& s) {
    s.cpu.perCore = {81.4, 7, 0, 100, 12.6};
    s.cpu.performanceCores = 2;
    s.cpu.efficiencyCores = 3;
  });
  model->totals.set({31.4, 18.4e9, 3.42e9, 21.5e9, 96.1e9});
  const auto cpu = at(toValue(*model->snapshot), {"cpu"});
  EXPECT_EQ(fact(page(Metric::cpu), "Load"), Format::decimal(number(cpu, {"load1"}), 2));
  std::vector<double> cores, told;
  for (const auto& group : page(Metric::cpu).cores)
    cores.insert(cores.end(), group.percent.begin(), group.percent.end());
  for (const auto& core : *at(cpu, {"perCore"}).asArray()) told.push_back(core.asDouble().value());
  EXPECT_EQ(cores, told);
  EXPECT_THAT(page(Metric::cpu).cores.front().percent, SizeIs(number(cpu, {"performanceCores"})));

  const auto totals = toValue(*model->totals);
  const auto bytes = [&](const char* name) { return Format::bytes(number(totals, {name})); };
  EXPECT_EQ(fact(page(Metric::network), "Today"), bytes("networkToday"));
  EXPECT_EQ(fact(page(Metric::network), "7 days"), bytes("network7Days"));
  EXPECT_EQ(fact(page(Metric::network), "30 days"), bytes("network30Days"));
  const auto today =
      healthPage(*model, {.zone = model->zone, .weekScore = {}, .hasBatterySettings = true}).today;
  ASSERT_THAT(today, SizeIs(3));
  EXPECT_EQ(joined(today[0].figure), Format::percent(number(totals, {"cpuToday"})));
  EXPECT_EQ(joined(today[1].figure), bytes("diskWrittenToday"));
  EXPECT_EQ(joined(today[2].figure), bytes("networkToday"));
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
  using enum SensorKind;
  model->sensors.set(SensorsSnapshot{.cpuCelsius = 61.4,
                                     .gpuCelsius = 47.5,
                                     .fans = {{"a", "Left", 1'840.6, 0, 4'200}, {"b", "Right", 0}},
                                     .temperatures = {{"Core 0", 61.4, cpu, "coretemp"},
                                                      {"Core 1", 58.5, cpu, "coretemp"},
                                                      {"Composite", 38.85, other, "nvme"}}});
  model->peripherals.set({{.name = "Mouse", .percent = 14, .kind = PeripheralBattery::Kind::mouse},
                          {.name = "Headset", .percent = 71}});
  const auto battery = page(Metric::energy);
  EXPECT_EQ(fact(battery, "Power"), Format::watts(measured({"battery", "systemPower"})));
  EXPECT_EQ(fact(battery, "Cycles"), Format::grouped(std::llround(measured({"battery", "cycles"}))));
  EXPECT_EQ(fact(battery, "Health"), Format::percent(measured({"battery", "health"})));
  EXPECT_EQ(fact(battery, "Time left"),
            Format::duration(Seconds{60 * measured({"battery", "minutesRemaining"})}));
  const auto told = sensorsValue(**model->sensors, *model->peripherals);
  const auto shown = sensorsPage(*model, TemperatureUnit::celsius);
  ASSERT_THAT(shown.groups, SizeIs(3)) << "the fans, then a group a chip";
  const auto& fans = *at(told, {"fans"}).asArray();
  ASSERT_THAT(shown.groups[0].rows, SizeIs(fans.size()));
  for (std::size_t i = 0; i < fans.size(); ++i) {
    EXPECT_EQ(shown.groups[0].rows[i].name, word(fans[i], "name"));
    EXPECT_EQ(shown.groups[0].rows[i].figure.number, Format::grouped(std::llround(number(fans[i], {"rpm"}))));
  }
  for (const auto& reading : *at(told, {"temperatures"}).asArray()) {
    const auto isGroup = [&](const SensorsPage::Group& each) { return each.title == word(reading, "chip"); };
    const auto group = std::ranges::find_if(shown.groups, isGroup);
    ASSERT_NE(group, shown.groups.end());
    const auto row = std::ranges::find(group->rows, word(reading, "name"), &SensorsPage::Row::name);
    ASSERT_NE(row, group->rows.end());
    EXPECT_EQ(row->figure.number + "°C", Format::celsius(number(reading, {"celsius"})));
  }
  const auto& devices = *at(told, {"peripherals"}).asArray();
  ASSERT_THAT(battery.devices, SizeIs(devices.size()));
  for (std::size_t i = 0; i < devices.size(); ++i) {
    EXPECT_EQ(battery.devices[i].name, word(devices[i], "name"));
    EXPECT_EQ(battery.devices[i].percent, number(devices[i], {"percent"}));
  }
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

TEST_F(SameFiguresTests, aiUsage) {
  AIUsageSummary usage;
  usage.updatedAt = model->now();
  const auto today = startOfDay(model->zone, localDay(model->zone, model->now()));
  const auto row = [&](double daysAgo, const char* name, std::int64_t output, std::optional<double> cost) {
    usage.rows.push_back({.day = today - Seconds{daysAgo * 86'400},
                          .tool = AITool::claude,
                          .model = name,
                          .project = "p",
                          .tokens = {.input = 100, .output = output},
                          .cost = cost});
  };
  row(0, "m", 5'000, 1.25);
  row(2, "m", 40'000, 10.5);
  row(2, "n", 700, 0.75);
  row(20, "m", 90'000'000, 2'000); // before the period
  const auto told = summaryValue(usage, model->zone);
  std::map<std::string, std::pair<std::int64_t, double>> models;
  double costToday = 0, costOfWeek = 0;
  for (const auto& each : *at(told, {"rows"}).asArray()) {
    if (word(each, "day") < "2026-11-09") continue; // six days before that of the model
    auto& [tokens, cost] = models[word(each, "model")];
    tokens += std::llround(number(each, {"tokens", "input"}) + number(each, {"tokens", "output"}));
    cost += number(each, {"cost"});
    costOfWeek += number(each, {"cost"});
    if (word(each, "day") == "2026-11-15") costToday += number(each, {"cost"});
  }
  const auto shown = aiUsagePage(usage, {.zone = model->zone, .now = model->now()});
  ASSERT_THAT(shown.tiles, SizeIs(2));
  EXPECT_EQ(shown.tiles[0].figure, Format::dollars(costToday));
  EXPECT_EQ(shown.tiles[1].figure, Format::dollars(costOfWeek));
  ASSERT_THAT(shown.models, SizeIs(models.size()));
  for (const auto& each : shown.models) {
    EXPECT_EQ(each.tokens, Format::shortCount(models[each.name].first)) << each.name;
    EXPECT_EQ(each.cost, Format::dollars(models[each.name].second)) << each.name;
  }
}

TEST_F(SameFiguresTests, storage) {
  ManualScheduler time{model->now()};
  const auto main = time.makeMainQueue();
  const auto slow = time.makeQueue("Korvell.storage");
  const auto measure = [](StorageKind kind, const Cancellation&) -> std::optional<StorageCategory> {
    if (kind != StorageKind::npm && kind != StorageKind::downloads) return std::nullopt;
    std::vector<StorageItem> items;
    for (const auto* name : {"/home/u/a", "/home/u/b"})
      items.push_back({.id = std::string(rawValue(kind)) + name,
                       .kind = kind,
                       .title = name,
                       .bytes = kind == StorageKind::npm ? 1'340'000'000 : 52'000'000,
                       .urls = {name}});
    return category(kind, std::move(items));
  };
  StorageScanner scanner({.measure = measure}, model->defaults, *main, *slow);
  scanner.scan(allStorageKinds());
  time.run();
  const auto told = toValue(**scanner.result);
  const auto shown = storagePage(
      scanner,
      {.zone = model->zone, .now = model->now(), .unfolded = {StorageKind::npm, StorageKind::downloads}});
  std::map<std::string, const StorageRow*> rows;
  for (const auto& group : shown.groups)
    for (const auto& row : group.rows) rows[std::string(rawValue(row.kind))] = &row;
  double sum = 0;
  for (const auto& each : *at(told, {"categories"}).asArray()) {
    const auto* row = rows[word(each, "kind")];
    ASSERT_TRUE(row) << word(each, "kind");
    sum += number(each, {"bytes"});
    EXPECT_EQ(row->size, Format::bytes(number(each, {"bytes"})));
    const auto& items = *at(each, {"items"}).asArray();
    ASSERT_THAT(row->items, SizeIs(items.size()));
    for (std::size_t i = 0; i < items.size(); ++i) {
      EXPECT_EQ(row->items[i].title, word(items[i], "title"));
      EXPECT_EQ(row->items[i].size, Format::bytes(number(items[i], {"bytes"})));
    }
  }
  EXPECT_EQ(rows.size(), 2u);
  EXPECT_EQ(joined(shown.total), Format::bytes(sum));
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
