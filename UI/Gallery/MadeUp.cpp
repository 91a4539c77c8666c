#include "UI/Gallery/MadeUp.h"

#include "Base/Date.h"
#include "Base/Format.h"
#include "Base/Localization.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvell {

namespace {

constexpr double megabyte = 1'048'576, gigabyte = 1024 * megabyte;
using enum Insight::Severity;
using ActionKind = Insight::Action::Kind;

Date madeUpNow() { return *parseRFC3339("2026-11-15T15:42:08Z"); }

/// The last five minutes of a measure that ends at a value and wanders by a share of it.
std::vector<HistoryPoint> wandering(Date now, double value, double share, double phase) {
  constexpr Seconds pace{2};
  const int count = int(Model::liveSpan / pace);
  std::vector<HistoryPoint> points;
  for (int i = 0; i <= count; ++i) {
    const double t = i * 0.7 + phase;
    double wave = std::sin(t) * std::cos(t * 0.37) + 0.6 * std::sin(t * 2.9);
    if (share > 1) wave = i % 23 == 7 ? 1.2 : i % 11 == 3 ? 0.3 : -0.85 / share; // mostly idle, with peaks
    const double left = double(count - i) / 4; // the last seconds approach the value
    points.push_back(
        {now - pace * (count - i), value * std::max(0.0, 1 + share * wave * std::min(1.0, left))});
  }
  return points;
}

void recordLive(MadeUpModel& model) {
  constexpr double shares[] = {0.3, 0.002, 2, 0.8, 0.2, 0.08};
  LiveSeries live;
  for (const auto& metric : allCases<Metric>()) {
    const auto i = std::size_t(metric.value);
    live[metric.value] =
        wandering(model.now(), metricValue(metric.value, *model.snapshot), shares[i], double(i) * 1.7);
  }
  model.live.set(std::move(live));
}

std::string weeklyName() {
  const auto name = localized("Weekly");
  return name == "Weekly" ? "weekly" : name;
}

Insight lowDisk() {
  return madeUpInsight(warning, 8, localized("Disk space is getting low"),
                       localized("{free} free on {volume}.",
                                 {{"free", Format::bytes(41.2e9)}, {"volume", localized("System disk")}}),
                       Insight::Action{.kind = ActionKind::freeUpSpace});
}
Insight idleServers() {
  return madeUpInsight(info, 4, localized("{n} idle dev servers", {{"n", "2"}}),
                       localized("Stopping them frees {memory} and ports {ports}.",
                                 {{"memory", Format::memory(958.0 * 1024 * 1024)}, {"ports", "3000, 8000"}}),
                       Insight::Action{.kind = ActionKind::stopIdleServers});
}
Insight leftover() {
  return madeUpInsight(
      info, 1, localized("{n} leftover startup items", {{"n", "1"}}),
      localized("They point to programs that no longer exist, usually from apps you uninstalled."),
      Insight::Action{.kind = ActionKind::showStartupItems});
}

void fillSnapshot(SystemSnapshot& s) {
  s.cpu = {.total = 24, .user = 19, .system = 5, .load1 = 2.14};
  s.memory = {.total = std::uint64_t(15.6 * gigabyte), .app = std::uint64_t(9.84 * gigabyte)};
  s.disk = {.readRate = 1.2e6,
            .writeRate = 2.3e6,
            .volumes = {{localized("System disk"), "/", 249'000'000'000, 41'200'000'000}}};
  s.network.inRate = 1.8e6;
  s.network.outRate = 86e3;
  s.gpu.utilization = 6;
  s.gpu.memoryInUse = std::uint64_t(412 * megabyte);
  s.battery = {.present = true,
               .percent = 74,
               .onAC = false,
               .health = 91,
               .minutesRemaining = 252,
               .systemPower = 9.6};
  for (const auto& app : {MadeUpApp{"Firefox", 23, 61.8, 3.12 * 1024, 34e3, 1.7e6},
                          {"Blender", 1, 52.3, 2.31 * 1024, 2.9e6, 0},
                          {"Terminal", 31, 38.6, 1.46 * 1024, 212e3, 84e3},
                          {"Linux", 214, 18.2, 612, 61e3, 3.1e3},
                          {"Thunderbird", 6, 6.4, 388, 4.2e3, 12e3},
                          {"Files", 2, 2.1, 96.4, 18e3, 0},
                          {"Korvell", 1, 0.3, 38.2, 1.2e3, 0},
                          {"Text Editor", 1, 0.1, 64, 0, 0}})
    s.apps.push_back(madeUp(app));
}

} // namespace

MadeUpModel::MadeUpModel() : MadeUpWorld(madeUpNow()), Model(*main, defaults) {}

void MadeUpModel::know(KnownPart part, Knowledge state) {
  change(known, [&](KnownParts& parts) { parts.set(part, state); });
}

void MadeUpModel::alert(HealthAlert::Kind kind, std::string title, Seconds ago) {
  change(alerts, [&](std::vector<HealthAlert>& list) {
    list.push_back(
        {.id = std::to_string(list.size()), .kind = kind, .title = std::move(title), .date = now() - ago});
  });
}

AppUsage madeUp(const MadeUpApp& app) {
  AppUsage usage{.id = app.name == "Linux" ? "system" : "app:" + std::string(app.name),
                 .name = std::string(app.name)};
  for (int i = 0; i < app.processes; ++i)
    usage.processes.push_back({.pid = 1000 + i,
                               .name = usage.name,
                               .cpu = app.cpu / app.processes,
                               .memory = std::uint64_t(app.memory * megabyte / app.processes),
                               .diskWrite = app.disk / app.processes,
                               .netIn = app.network / app.processes});
  return usage;
}

Insight madeUpInsight(Insight::Severity severity, int penalty, std::string title, std::string detail,
                      std::optional<Insight::Action> action) {
  return {severity, std::move(title), std::move(detail), penalty, std::move(action)};
}

HealthReport madeUpReport(std::vector<Insight> insights) {
  HealthReport report;
  for (const auto& insight : insights) report.score = std::max(0, report.score - insight.penalty);
  report.insights = std::move(insights);
  return report;
}

MadeUp startingMachine() { return std::make_unique<MadeUpModel>(); }

MadeUp usualMachine() {
  auto model = std::make_unique<MadeUpModel>();
  model->hasSample.set(true);
  model->change(model->snapshot, fillSnapshot);
  for (const auto& part : allCases<KnownPart>()) model->know(part.value, Knowledge::fresh);
  recordLive(*model);
  model->totals.set({.cpuToday = 31, .diskWrittenToday = 18.4e9, .networkToday = 3.42e9});
  model->report.set(madeUpReport({lowDisk(), idleServers(), leftover()}));
  model->sensors.set(SensorsSnapshot{.cpuCelsius = 58});
  std::vector<DevServer> servers(5);
  model->projects.set({{"herbarium", servers}});
  model->startupItems.set({{.label = "old.agent", .isLeftover = true}});
  model->alert(HealthAlert::Kind::cpu, localized("{app} is keeping the CPU busy", {{"app", "Blender"}}),
               Seconds(6248));
  model->alert(HealthAlert::Kind::aiPlanLimit,
               localized("Codex {limit} limit at {percent}%", {{"limit", weeklyName()}, {"percent", "84"}}),
               Seconds(15368));
  model->alert(HealthAlert::Kind::disk, localized("{app} is hammering the disk", {{"app", "Files"}}),
               Seconds(90'000));
  return model;
}

MadeUp healthyMachine() {
  auto model = usualMachine();
  model->report.set(madeUpReport({}));
  model->alerts.set({});
  return model;
}

MadeUp troubledMachine() {
  auto model = usualMachine();
  model->change(model->snapshot, [](SystemSnapshot& s) {
    s.cpu = {.total = 98, .user = 90, .system = 8, .load1 = 11.7};
    s.disk.volumes.front().available = 4'120'000'000;
    s.battery.health = 71;
    std::erase_if(s.apps, [](const AppUsage& app) { return app.name == "Blender"; });
    s.apps.insert(s.apps.begin(), madeUp({"Blender", 1, 640, 9.06 * 1024, 2.9e6, 0}));
    s.memory.app = s.memory.total;
    s.memory.pressure = MemoryStats::Pressure::critical;
  });
  model->sensors.set(SensorsSnapshot{.cpuCelsius = 97});
  recordLive(*model);
  const Insight::Action quit{ActionKind::quitApp, "/Applications/Blender.app", "Blender"};
  model->report.set(madeUpReport(
      {madeUpInsight(
           critical, 30, localized("Memory is exhausted"),
           localized("macOS is compressing and swapping heavily, so everything slows down.") + " " +
               localized("{app} uses {memory}.", {{"app", "Blender"}, {"memory", Format::bytes(9.06e9)}}),
           quit),
       madeUpInsight(critical, 20,
                     localized("{volume} is almost full", {{"volume", localized("System disk")}}),
                     localized("{free} free. macOS needs room for swap and updates.",
                               {{"free", Format::bytes(4.12e9)}}),
                     Insight::Action{.kind = ActionKind::freeUpSpace}),
       madeUpInsight(critical, 15, localized("Your Mac is throttling"),
                     localized("It is too hot to run at full speed, CPU at {n}°.", {{"n", "97"}})),
       madeUpInsight(warning, 15, localized("CPU busy for 10 minutes"),
                     localized("{n}% on average.", {{"n", "96"}}) + " " +
                         localized("{app} is the main load.", {{"app", "Blender"}}),
                     quit),
       madeUpInsight(warning, 10, localized("Battery at {n}% of original capacity", {{"n", "71"}}),
                     localized("{cycles} cycles. Apple recommends service below 80%.", {{"cycles", "940"}}),
                     Insight::Action{.kind = ActionKind::openBatterySettings}),
       madeUpInsight(warning, 8, localized("{swap} of swap in use", {{"swap", Format::bytes(6.31e9)}}),
                     localized("Memory is spilling to disk. A restart clears it if pressure stays normal.")),
       idleServers(), leftover()}));
  return model;
}

MadeUp wordyMachine() {
  auto model = usualMachine();
  model->change(model->snapshot, [](SystemSnapshot& s) {
    s.memory.total = std::uint64_t(1.97 * 1024 * gigabyte);
    s.memory.app = std::uint64_t(1021 * gigabyte);
    s.disk.readRate = 988e6;
    s.network.inRate = 999e6;
    s.network.outRate = 999e6;
    s.battery.minutesRemaining = 1439;
    for (auto& app : s.apps) app.name += " Professional Edition with a Name That Does Not End";
    s.apps.front() =
        madeUp({"Donaudampfschifffahrtsgesellschaftskapitänsverwaltung", 1204, 6400, 1e6, 988e6, 988e6});
  });
  recordLive(*model);
  model->report.set(madeUpReport(
      {madeUpInsight(warning, 15,
                     localized("{app} keeps using more memory",
                               {{"app", "Donaudampfschifffahrtsgesellschaftskapitänsverwaltung"}}),
                     localized("Apps are competing for RAM.") + " " +
                         localized("{app} is the biggest at {memory}.",
                                   {{"app", "Donaudampfschifffahrtsgesellschaftskapitänsverwaltung"},
                                    {"memory", Format::bytes(976e9)}}),
                     Insight::Action{ActionKind::quitApp, "/a",
                                     "Donaudampfschifffahrtsgesellschaftskapitänsverwaltung"}),
       lowDisk()}));
  model->alerts.set({});
  model->alert(HealthAlert::Kind::network,
               localized("{app} is using a lot of network",
                         {{"app", "Donaudampfschifffahrtsgesellschaftskapitänsverwaltung"}}),
               Seconds(300));
  return model;
}

MadeUp bareMachine() {
  auto model = usualMachine();
  model->change(model->snapshot, [](SystemSnapshot& s) {
    s.battery = {};
    s.gpu = {};
  });
  model->known.set({});
  for (const auto part : {KnownPart::processor, KnownPart::memory, KnownPart::volumes, KnownPart::network})
    model->know(part, Knowledge::fresh);
  model->know(KnownPart::power, Knowledge::refused);
  model->totals.set({});
  model->report.set(madeUpReport({}));
  model->alerts.set({});
  return model;
}

} // namespace korvell
