#include "Core/Health/HealthReport.h"

#include "Platform/Formats/LinuxWords.h"
#include "Tests/Fakes/FakeMachineState.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using Pressure = MemoryStats::Pressure;
using Severity = Insight::Severity;
using Kind = Insight::Action::Kind;

constexpr Date now{1'800'000'000};
constexpr std::int64_t gigabyte = 1'000'000'000;

/// A machine in good health, which each case spoils in its own way.
struct Machine {
  SystemSnapshot snapshot;
  std::optional<SensorsSnapshot> sensors;
  double average = 80;
  std::vector<DevProject> projects;
  std::vector<StartupItem> startup;
  FakeMachineState state;

  Machine() {
    snapshot.memory.swapUsed = 4'000'000'000;
    snapshot.disk.volumes = {{"Disk", "/", 100 * gigabyte, 20 * gigabyte}, {"Other", "/o", gigabyte, 0}};
    snapshot.battery = {.present = true, .cycles = 321, .health = 80};
    state.up = Seconds(1'209'600);
    addApp("Editor", "/Editor.app", {30, 20}, 3'000'000'000);
    addApp("Browser", "/Browser.app", {40}, 3'000'000'000);
    addApp("compiler", std::nullopt, {300}, 9'000'000'000);
    startup = {{.label = "here", .program = "/bin/sh"}, {.label = "without"}};
    projects = {{"shop", {server(1'800, {3000})}}};
  }
  void addApp(std::string name, std::optional<std::string> bundle, const std::vector<double>& cpus,
              std::uint64_t memory) {
    AppUsage app{.id = name, .name = name, .bundlePath = bundle};
    for (const double cpu : cpus) app.processes.push_back({.cpu = cpu, .memory = memory / cpus.size()});
    snapshot.apps.push_back(app);
  }
  static DevServer server(double idleSeconds, std::vector<int> ports) {
    return {.ports = std::move(ports), .memory = 100 << 20, .lastActive = now - Seconds(idleSeconds)};
  }
  /// Under pressure, without the first applications.
  void press(Pressure pressure, int gone) {
    snapshot.memory.pressure = pressure;
    snapshot.apps.erase(snapshot.apps.begin(), snapshot.apps.begin() + gone);
  }
  void heat(ThermalState thermal, const SensorsSnapshot& told) {
    state.thermal = thermal;
    sensors = told;
  }
  HealthReport report() const {
    return HealthReport::make(snapshot, sensors, average, projects, startup, state, now);
  }
};

std::string line(const Insight& insight) {
  return std::string(rawValue(insight.severity)) + " -" + std::to_string(insight.penalty) + " " +
         insight.title + " | " + insight.detail + " | " + (insight.action ? title(*insight.action) : "");
}

struct Case {
  const char* name;
  void (*spoil)(Machine&);
  std::vector<std::string> expected;
};

const std::string leftovers =
    " leftover startup items | They point to programs that no longer exist, usually "
    "from apps you uninstalled. | Review startup items";
const std::string exhausted =
    "critical -30 Memory is exhausted | macOS is compressing and swapping heavily, so "
    "everything slows down.";
const std::string spilling =
    " of swap in use | Memory is spilling to disk. A restart clears it if pressure stays "
    "normal. | ";
const std::string restart = " days | A restart clears leaked memory and applies pending updates. | ";
const std::string throttling = "critical -15 Your Mac is throttling | It is too hot to run at full speed";
const std::string needsRoom = " free. macOS needs room for swap and updates. | Free up space";

const Case cases[] = {
    {"in good health, every figure at its threshold", [](Machine&) {}, {}},
    {"a volume of no size", [](Machine& m) { m.snapshot.disk.volumes[0].total = 0; }, {}},
    {"no volumes", [](Machine& m) { m.snapshot.disk.volumes.clear(); }, {}},
    {"a battery of unknown health", [](Machine& m) { m.snapshot.battery.health = 0; }, {}},
    {"a worn battery that is not there", [](Machine& m) { m.snapshot.battery = {.health = 50}; }, {}},
    {"pressure names the first of the heaviest applications",
     [](Machine& m) { m.snapshot.memory.pressure = Pressure::warning; },
     {"warning -15 Memory is under pressure | Apps are competing for RAM. Editor is the biggest at 2.79 GB. "
      "| "
      "Quit Editor"}},
    {"pressure without an application",
     [](Machine& m) { m.press(Pressure::warning, 2); },
     {"warning -15 Memory is under pressure | Apps are competing for RAM. | "}},
    {"exhausted memory",
     [](Machine& m) { m.press(Pressure::critical, 0); },
     {exhausted + " Editor uses 2.79 GB. | Quit Editor"}},
    {"a byte too much of swap",
     [](Machine& m) { m.snapshot.memory.swapUsed = 4'000'000'001; },
     {"warning -8 3.73 GB" + spilling}},
    {"a busy processor names who has no bundle but offers nothing",
     [](Machine& m) { m.average = 80.01; },
     {"warning -15 CPU busy for 10 minutes | 80% on average. compiler is the main load. | "}},
    {"a busy processor by an application",
     [](Machine& m) { m.average = 99.99, m.snapshot.apps.pop_back(); },
     {"warning -15 CPU busy for 10 minutes | 99% on average. Editor is the main load. | Quit Editor"}},
    {"a busy processor by nobody",
     [](Machine& m) { m.average = 90, m.snapshot.apps.clear(); },
     {"warning -15 CPU busy for 10 minutes | 90% on average. | "}},
    {"a tenth free is only low",
     [](Machine& m) { m.snapshot.disk.volumes[0].available = 10 * gigabyte; },
     {"warning -8 Disk space is getting low | 10.0 GB free on Disk. | Free up space"}},
    {"less than a tenth free",
     [](Machine& m) { m.snapshot.disk.volumes[0].available = 10 * gigabyte - 1; },
     {"critical -20 Disk is almost full | 10.0 GB" + needsRoom}},
    {"a worn battery",
     [](Machine& m) { m.snapshot.battery.health = 79.9; },
     {"warning -10 Battery at 79% of original capacity | 321 cycles. Apple recommends service below 80%. | "
      "Open "
      "battery settings"}},
    {"warm",
     [](Machine& m) { m.state.thermal = ThermalState::fair; },
     {"info -3 Running warm | Thermal state is elevated but not throttling yet. | "}},
    {"throttling, with a temperature",
     [](Machine& m) { m.heat(ThermalState::serious, {.cpuCelsius = 97.9}); },
     {throttling + ", CPU at 97°. | "}},
    {"throttling, sensors without a processor",
     [](Machine& m) { m.heat(ThermalState::critical, {.gpuCelsius = 50}); },
     {throttling + ". | "}},
    {"one idle server",
     [](Machine& m) { m.projects[0].servers[0].lastActive = now - Seconds(1'800.001); },
     {"info -2 1 idle dev servers | Stopping them frees 100 MB and ports 3000. | Stop idle servers"}},
    {"five idle servers, in the order of projects and servers",
     [](Machine& m) {
       m.projects = {{"a", {Machine::server(9'000, {5000, 80}), Machine::server(60, {1})}},
                     {"b", std::vector<DevServer>(4, Machine::server(9'000, {7}))}};
     },
     {"info -8 5 idle dev servers | Stopping them frees 500 MB and ports 5000, 80, 7, 7, 7, 7. | Stop idle "
      "servers"}},
    {"a leftover", [](Machine& m) { m.startup[0].isLeftover = true; }, {"info -1 1" + leftovers}},
    {"seven leftovers cost five",
     [](Machine& m) { m.startup.assign(7, {.program = "/gone", .isLeftover = true}); },
     {"info -5 7" + leftovers}},
    {"up for long", [](Machine& m) { m.state.up = Seconds(1'209'600.5); }, {"info -4 Up for 14" + restart}},
    {"the most severe first, equals in the order of the rules",
     [](Machine& m) {
       m.state.up = Seconds(20 * 86'400);
       m.state.thermal = ThermalState::critical;
       m.snapshot.disk.volumes[0].available = 0;
       m.snapshot.memory.swapUsed = 1ull << 40;
       m.press(Pressure::critical, 3);
     },
     {exhausted + " | ", "critical -20 Disk is almost full | 0 B" + needsRoom, throttling + ". | ",
      "warning -8 1.00 TB" + spilling, "info -4 Up for 20" + restart}},
};

TEST(HealthReportTests, findings) {
  for (const auto& row : cases) {
    Machine machine;
    row.spoil(machine);
    const auto report = machine.report();
    std::vector<std::string> lines;
    int score = 100;
    for (const auto& insight : report.insights) {
      lines.push_back(line(insight));
      score -= insight.penalty;
    }
    EXPECT_EQ(lines, row.expected) << row.name;
    EXPECT_EQ(report.score, score) << row.name;
  }
}

TEST(HealthReportTests, theFixIsAboutTheApplicationThatIsNamed) {
  Machine machine;
  machine.snapshot.memory.pressure = Pressure::warning;
  machine.state.thermal = ThermalState::fair;
  const auto report = machine.report();
  EXPECT_EQ(report.insights[0].action, (Insight::Action{Kind::quitApp, "/Editor.app", "Editor"}));
  EXPECT_FALSE(report.insights[1].action);
}

TEST(HealthReportTests, theScoreHasAFloorAndTheFindingsStay) {
  Machine machine;
  machine.press(Pressure::critical, 0);
  machine.snapshot.memory.swapUsed = 5'000'000'000;
  machine.average = 100;
  machine.snapshot.disk.volumes[0].available = 0;
  machine.snapshot.battery.health = 10;
  machine.state.thermal = ThermalState::critical;
  machine.state.up = Seconds(1e9);
  machine.projects[0].servers.assign(4, Machine::server(1e6, {}));
  const auto report = machine.report(); // 30 + 8 + 15 + 20 + 10 + 15 + 8 + 4
  EXPECT_EQ(report.score, 0);
  EXPECT_EQ(report.insights.size(), 8u);
}

TEST(HealthReportTests, labels) {
  const std::pair<int, const char*> rows[] = {{100, "Excellent"},     {90, "Excellent"}, {89, "Good"},
                                              {75, "Good"},           {74, "Fair"},      {50, "Fair"},
                                              {49, "Needs attention"}};
  for (const auto& [score, label] : rows) EXPECT_EQ((HealthReport{score, {}}.label()), label) << score;
}

TEST(HealthReportTests, otherSystemsHaveOtherWords) {
  Machine machine;
  machine.snapshot.battery.health = 70;
  machine.state.thermal = ThermalState::serious;
  machine.snapshot.disk.volumes[0].available = 0;
  machine.press(Pressure::critical, 0);
  setLocalization(linuxWords());
  std::string all;
  for (const auto& insight : machine.report().insights) all += line(insight) + "\n";
  setLocalization({});
  EXPECT_NE(all.find("Your computer is throttling"), std::string::npos) << all;
  for (const char* foreign : {"Mac", "macOS", "Apple"})
    EXPECT_EQ(all.find(foreign), std::string::npos) << all;
}

} // namespace
} // namespace korvell
