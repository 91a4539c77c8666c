// What judging a snapshot costs: the report, and an evaluation of the alerts with full windows, for 500
// applications of four processes. The floor is the one thing that neither can do without: adding up the four
// figures of every process.

#include "Bench/Measure.h"
#include "Core/Health/AlertEngine.h"
#include "Core/Health/HealthReport.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <random>
#include <vector>

using namespace korvell;

namespace {

constexpr int applications = 500;
constexpr int processes = 4;
volatile double sink;

class HotMachine final : public MachineState {
public:
  ThermalState thermalState() const override { return ThermalState::serious; }
  Seconds uptime() const override { return Seconds(3e6); }
};

class NoSettings final : public UserDefaults {
public:
  std::optional<Value> value(std::string_view) const override { return std::nullopt; }
  bool update(std::string_view, const std::function<std::optional<Value>(std::optional<Value>)>&) override {
    return false;
  }
  std::string place() const override { return {}; }
};

class NoDesktop final : public Notifications {
public:
  void post(const Notification&) override {}
};

SystemSnapshot busySnapshot() {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> share(0, 1);
  SystemSnapshot snapshot;
  snapshot.memory = {
      .total = 16ull << 30, .swapUsed = 6ull << 30, .pressure = MemoryStats::Pressure::critical};
  snapshot.disk.volumes = {{"Disk", "/", 1'000'000'000'000, 50'000'000'000}};
  snapshot.battery = {.present = true, .cycles = 700, .health = 71};
  for (int i = 0; i < applications; ++i) {
    const auto path = fmt::format("/usr/share/applications/org.example.app{}.desktop", i);
    AppUsage app{.id = path, .name = fmt::format("Application {}", i), .bundlePath = path};
    for (int p = 0; p < processes; ++p)
      app.processes.push_back({.pid = i * processes + p,
                               .cpu = share(random),
                               .memory = std::uint64_t(share(random) * 1e8),
                               .diskRead = share(random) * 1e6,
                               .diskWrite = share(random) * 1e6,
                               .netIn = share(random) * 1e5,
                               .netOut = share(random) * 1e5});
    snapshot.apps.push_back(std::move(app));
  }
  return snapshot;
}

/// Microseconds of the median run.
template <class Work>
double medianTime(int runs, Work&& work) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    times.push_back(
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - begin).count());
  }
  return median(std::move(times));
}

} // namespace

int main() {
  auto snapshot = busySnapshot();
  const double floor = medianTime(200, [&] {
    double sum = 0;
    for (const auto& app : snapshot.apps)
      sum += app.cpu() + double(app.memory()) + app.diskRead() + app.diskWrite() + app.netIn() + app.netOut();
    sink = sum;
  });

  const HotMachine state;
  const std::optional<SensorsSnapshot> sensors = SensorsSnapshot{.cpuCelsius = 97};
  std::vector<DevProject> projects{{"shop", std::vector<DevServer>(5, {.ports = {3000}, .memory = 1 << 28})}};
  std::vector<StartupItem> startup(300, {.label = "x", .program = "/gone", .isLeftover = true});
  const double report = medianTime(
      200, [&] { sink = HealthReport::make(snapshot, sensors, 95, projects, startup, state, {1e9}).score; });

  const NoSettings defaults;
  NoDesktop notifications;
  AlertEngine engine({defaults, notifications}, "system", 8);
  std::vector<double> evaluations;
  for (int cycle = 0; cycle < 1000; ++cycle) {
    snapshot.date = snapshot.date + Seconds(10);
    const double time = medianTime(1, [&] { sink = double(engine.evaluate(snapshot).size()); });
    if (cycle > 400 && cycle % 3 == 0)
      evaluations.push_back(time); // windows are full, and this one evaluates
  }
  std::ranges::sort(evaluations);
  fmt::print("{:<44} {:>8.1f} µs\n", "floor: adding up 2,000 processes", floor);
  fmt::print("{:<44} {:>8.1f} µs  {:.1f} x\n", "report with nine findings", report, report / floor);
  const double middle = evaluations[evaluations.size() / 2];
  fmt::print("{:<44} {:>8.1f} µs  {:.1f} x\n", "alerts, a sample taken and evaluated: median", middle,
             middle / floor);
  fmt::print("{:<44} {:>8.1f} µs\n", "nine of ten are faster than", evaluations[evaluations.size() * 9 / 10]);
}
