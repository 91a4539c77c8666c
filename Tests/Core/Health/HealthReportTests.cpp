#include "Core/Health/HealthReport.h"

#include "Platform/Formats/LinuxWords.h"
#include "Tests/Fakes/FakeMachineState.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::StartsWith;
using Pressure = MemoryStats::Pressure;

constexpr Date now{1'800'000'000};
constexpr std::int64_t gigabyte = 1'000'000'000;

/// A machine in good health with every figure at its threshold, which each case spoils in its own way.
struct Machine {
  SystemSnapshot snapshot;
  std::optional<SensorsSnapshot> sensors;
  double average = 80;
  std::vector<DevProject> projects = {{"shop", {server(1'800, {3000})}}};
  std::vector<StartupItem> startup = {{.label = "here", .program = "/bin/sh"}, {.label = "without"}};
  FakeMachineState state;

  Machine() {
    snapshot.memory.swapUsed = 4'000'000'000;
    snapshot.disk.volumes = {{"Disk", "/", 100 * gigabyte, 20 * gigabyte}, {"Other", "/o", gigabyte, 0}};
    snapshot.battery = {.present = true, .cycles = 321, .health = 80};
    snapshot.apps = {app("Editor", "/Editor.app", 50, 3), app("Browser", "/Browser.app", 40, 3),
                     app("compiler", std::nullopt, 300, 9)};
    state.up = Seconds(1'209'600);
  }
  static AppUsage app(std::string name, std::optional<std::string> bundle, double cpu, int gigabytes) {
    return {.name = name,
            .bundlePath = bundle,
            .processes = {{.cpu = cpu, .memory = std::uint64_t(gigabytes * gigabyte)}}};
  }
  static DevServer server(double idleSeconds, std::vector<int> ports) {
    return {.ports = std::move(ports), .memory = 100 << 20, .lastActive = now - Seconds(idleSeconds)};
  }
  /// Only the compiler runs, which nobody can quit.
  void quitApplications() { snapshot.apps = {snapshot.apps.back()}; }
  void heatUp(ThermalState thermal, std::optional<double> celsius) {
    state.thermal = thermal;
    sensors = SensorsSnapshot{.cpuCelsius = celsius};
  }
  void spoilEverything() {
    snapshot.memory.pressure = Pressure::critical;
    snapshot.memory.swapUsed = 1ull << 40;
    average = 99.99;
    snapshot.disk.volumes[0].available = 10 * gigabyte - 1;
    snapshot.battery.health = 10;
    heatUp(ThermalState::serious, 97.9);
    projects = {{"a", {server(9'000, {5000, 80}), server(60, {1})}},
                {"b", std::vector<DevServer>(4, server(9'000, {7}))}};
    startup.assign(7, {.isLeftover = true});
    state.up = Seconds(20 * 86'400);
  }
  HealthReport report() const {
    return HealthReport::make(snapshot, sensors, average, projects, startup, state, now);
  }
};

std::string line(const Insight& insight) {
  auto line = std::string(rawValue(insight.severity)) + " -" + std::to_string(insight.penalty) + " " +
              insight.title + " | " + insight.detail;
  if (insight.action) line += " | " + title(*insight.action) + insight.action->bundlePath.value_or("");
  return line;
}

struct Case {
  const char* name;
  void (*spoil)(Machine&);
  std::vector<testing::Matcher<std::string>> expected;
};

const std::string busy = "warning -15 CPU busy for 10 minutes | ";
const std::string throttling = "critical -15 Your Mac is throttling | It is too hot to run at full speed";

const Case cases[] = {
    {"in good health", [](Machine&) {}, {}},
    {"nothing to tell the health by",
     [](Machine& m) {
       m.snapshot.disk.volumes.clear();
       m.snapshot.battery.health = 0;
     },
     {}},
    {"a worn battery that is not there", [](Machine& m) { m.snapshot.battery = {.health = 50}; }, {}},
    {"a little beyond the thresholds: the worst first, equals in the order of the rules",
     [](Machine& m) {
       m.snapshot.memory.pressure = Pressure::warning;
       m.snapshot.memory.swapUsed += 1;
       m.average = 80.01;
       m.snapshot.disk.volumes[0].available = 10 * gigabyte;
       m.snapshot.battery.health = 79.9;
       m.state.thermal = ThermalState::fair;
       m.projects[0].servers[0].lastActive = now - Seconds(1'800.001);
       m.startup[0].isLeftover = true;
       m.state.up += Seconds(0.5);
     },
     {"warning -15 Memory is under pressure | Apps are competing for RAM. Editor is the biggest at 2.79 GB. "
      "| Quit Editor/Editor.app",
      "warning -8 3.73 GB of swap in use | Memory is spilling to disk. A restart clears it if pressure stays "
      "normal.",
      busy + "80% on average. compiler is the main load.",
      "warning -8 Disk space is getting low | 10.0 GB free on Disk. | Free up space",
      "warning -10 Battery at 79% of original capacity | 321 cycles. Apple recommends service below 80%. | "
      "Open battery settings",
      "info -3 Running warm | Thermal state is elevated but not throttling yet.",
      "info -2 1 idle dev servers | Stopping them frees 100 MB and ports 3000. | Stop idle servers",
      "info -1 1 leftover startup items | They point to programs that no longer exist, usually from apps you "
      "uninstalled. | Review startup items",
      "info -4 Up for 14 days | A restart clears leaked memory and applies pending updates."}},
    {"far beyond them",
     [](Machine& m) { m.spoilEverything(); },
     {"critical -30 Memory is exhausted | macOS is compressing and swapping heavily, so everything slows "
      "down. Editor uses 2.79 GB. | Quit Editor/Editor.app",
      "critical -20 Disk is almost full | 10.0 GB free. macOS needs room for swap and updates. | Free up "
      "space",
      throttling + ", CPU at 97°.", StartsWith("warning -8 1.00 TB of swap"), StartsWith(busy + "99%"),
      StartsWith("warning -10 Battery at 10%"),
      StartsWith("info -8 5 idle dev servers | Stopping them frees 500 MB and ports 5000, 80, 7, 7, 7, 7."),
      StartsWith("info -5 7 leftover"), StartsWith("info -4 Up for 20")}},
    {"pressure without an application",
     [](Machine& m) {
       m.snapshot.memory.pressure = Pressure::warning;
       m.quitApplications();
     },
     {"warning -15 Memory is under pressure | Apps are competing for RAM."}},
    {"a busy processor by an application",
     [](Machine& m) {
       m.average = 90;
       m.snapshot.apps.pop_back();
     },
     {busy + "90% on average. Editor is the main load. | Quit Editor/Editor.app"}},
    {"a busy processor by nobody",
     [](Machine& m) {
       m.average = 90;
       m.snapshot.apps.clear();
     },
     {busy + "90% on average."}},
    {"throttling, sensors without a processor",
     [](Machine& m) { m.heatUp(ThermalState::critical, std::nullopt); },
     {throttling + "."}},
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
    EXPECT_THAT(lines, testing::ElementsAreArray(row.expected)) << row.name;
    EXPECT_EQ(report.score, std::max(score, 0)) << row.name;
  }
}

TEST(HealthReportTests, labels) {
  const std::pair<int, const char*> rows[] = {{90, "Excellent"}, {89, "Good"}, {75, "Good"},
                                              {74, "Fair"},      {50, "Fair"}, {49, "Needs attention"}};
  for (const auto& [score, label] : rows) EXPECT_EQ((HealthReport{score, {}}.label()), label) << score;
}

TEST(HealthReportTests, otherSystemsHaveOtherWords) {
  Machine machine;
  machine.spoilEverything();
  setLocalization(linuxWords());
  std::string all;
  for (const auto& insight : machine.report().insights) all += line(insight) + "\n";
  setLocalization({});
  EXPECT_THAT(all, testing::HasSubstr("Your computer is throttling"));
  for (const char* foreign : {"Mac", "macOS", "Apple"})
    EXPECT_THAT(all, testing::Not(testing::HasSubstr(foreign)));
}

} // namespace
} // namespace korvell
