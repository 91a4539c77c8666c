// The tools "health" and "machine".

#include "Agents/ReadingTools.h"
#include "Core/DevServers/DevServerRules.h"

namespace korvell {

namespace {

// health

struct FindingFix {
  Insight::Action::Kind kind = Insight::Action::Kind::quitApp;
  std::string title;
  std::optional<std::string> tool, handle; ///< the call that does it; absent where a person must

  static constexpr auto fields() {
    return std::tuple{Field{"kind", &FindingFix::kind}, Field{"title", &FindingFix::title},
                      Field{"tool", &FindingFix::tool}, Field{"handle", &FindingFix::handle}};
  }
};

struct Finding {
  Insight::Severity severity = Insight::Severity::info;
  std::string title, detail;
  int penalty = 0;
  std::optional<FindingFix> fix;

  static constexpr auto fields() {
    return std::tuple{Field{"severity", &Finding::severity}, Field{"title", &Finding::title},
                      Field{"detail", &Finding::detail}, Field{"penalty", &Finding::penalty},
                      Field{"fix", &Finding::fix}};
  }
};

struct HealthAnswer {
  int score = 100;
  std::string label;
  bool isComplete = false; ///< the ten minutes that the score looks at are known
  std::vector<Finding> findings;
  std::optional<std::string> nothingRecorded;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"score", &HealthAnswer::score},
                      Field{"label", &HealthAnswer::label},
                      Field{"isComplete", &HealthAnswer::isComplete},
                      Field{"findings", &HealthAnswer::findings},
                      Field{"nothingRecorded", &HealthAnswer::nothingRecorded},
                      Field{"source", &HealthAnswer::source}};
  }
};

std::optional<std::string> handleOf(const Insight::Action& action, Readings& readings, Reading& reading,
                                    const SystemSnapshot& snapshot) {
  using Kind = Insight::Action::Kind;
  if (action.kind == Kind::quitApp)
    for (const auto& app : snapshot.apps)
      if (app.bundlePath == action.bundlePath && app.name == action.name)
        return readings.handleOf(app, snapshot.date);
  if (action.kind == Kind::stopIdleServers)
    if (auto idle = idleServers(reading.projects(), readings.now()); !idle.empty())
      return readings.services().handles.give({StopIdleServersRequest{std::move(idle)}});
  return std::nullopt;
}

Result<Value> readHealth(Readings& readings, const Value&, const Cancellation&) {
  Reading reading(readings, {"snapshot", "known", "report", "privileged", "historyProblem", "projects"});
  const auto measured = reading.measurement();
  HealthAnswer answer{.score = measured.report.score,
                      .label = measured.report.label(),
                      .isComplete = measured.known.has(KnownPart::tenMinuteAverage)};
  for (const auto& insight : measured.report.insights) {
    Finding finding{insight.severity, insight.title, insight.detail, insight.penalty};
    if (const auto& action = insight.action) {
      finding.fix = {action->kind, title(*action)};
      finding.fix->handle = handleOf(*action, readings, reading, measured.snapshot);
      if (finding.fix->handle)
        finding.fix->tool = action->kind == Insight::Action::Kind::quitApp ? "quit_app" : "stop_idle_servers";
    }
    answer.findings.push_back(std::move(finding));
  }
  if (measured.historyProblem) answer.nothingRecorded = measured.historyProblem->detail;
  answer.source =
      reading.source({"The CPU over the last ten minutes and idle servers need a running Korvell."});
  return toValue(answer);
}

// machine

struct ProcessorFigures {
  double total = 0, user = 0, system = 0;
  std::optional<double> load1;
  std::uint32_t cores = 0;

  static constexpr auto fields() {
    return std::tuple{Field{"total", &ProcessorFigures::total, Unit::percent},
                      Field{"user", &ProcessorFigures::user, Unit::percent},
                      Field{"system", &ProcessorFigures::system, Unit::percent},
                      Field{"load1", &ProcessorFigures::load1}, Field{"cores", &ProcessorFigures::cores}};
  }
};

struct DiskFigures {
  std::optional<double> readRate, writeRate;
  std::optional<std::vector<VolumeInfo>> volumes;

  static constexpr auto fields() {
    return std::tuple{Field{"readRate", &DiskFigures::readRate, Unit::bytesPerSecond},
                      Field{"writeRate", &DiskFigures::writeRate, Unit::bytesPerSecond},
                      Field{"volumes", &DiskFigures::volumes}};
  }
};

struct GraphicsFigures {
  std::string name;
  std::optional<double> utilization;
  std::optional<std::uint64_t> memoryInUse;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &GraphicsFigures::name},
                      Field{"utilization", &GraphicsFigures::utilization, Unit::percent},
                      Field{"memoryInUse", &GraphicsFigures::memoryInUse, Unit::memory}};
  }
};

struct BatteryFigures {
  int percent = 0;
  bool isCharging = false, onAC = true;
  std::optional<int> minutesRemaining, cycles;
  std::optional<double> health, temperature;

  static constexpr auto fields() {
    return std::tuple{Field{"percent", &BatteryFigures::percent, Unit::percent},
                      Field{"isCharging", &BatteryFigures::isCharging},
                      Field{"onAC", &BatteryFigures::onAC},
                      Field{"minutesRemaining", &BatteryFigures::minutesRemaining, Unit::minutes},
                      Field{"cycles", &BatteryFigures::cycles},
                      Field{"health", &BatteryFigures::health, Unit::percent},
                      Field{"temperature", &BatteryFigures::temperature, Unit::celsius}};
  }
};

struct MachineAnswer {
  Date date;
  std::optional<ProcessorFigures> cpu;
  std::optional<MemoryStats> memory;
  DiskFigures disk;
  std::optional<NetworkStats> network;
  std::optional<GraphicsFigures> gpu;
  std::optional<BatteryFigures> battery;
  std::optional<double> power, cpuCelsius, gpuCelsius;
  std::uint64_t uptime = 0;
  std::vector<KnownPart> unread; ///< what nobody tells here
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"date", &MachineAnswer::date},
                      Field{"cpu", &MachineAnswer::cpu},
                      Field{"memory", &MachineAnswer::memory},
                      Field{"disk", &MachineAnswer::disk},
                      Field{"network", &MachineAnswer::network},
                      Field{"gpu", &MachineAnswer::gpu},
                      Field{"battery", &MachineAnswer::battery},
                      Field{"power", &MachineAnswer::power, Unit::watts},
                      Field{"cpuCelsius", &MachineAnswer::cpuCelsius, Unit::celsius},
                      Field{"gpuCelsius", &MachineAnswer::gpuCelsius, Unit::celsius},
                      Field{"uptime", &MachineAnswer::uptime, Unit::seconds},
                      Field{"unread", &MachineAnswer::unread},
                      Field{"source", &MachineAnswer::source}};
  }
};

template <class T>
std::optional<T> ifKnown(const KnownParts& known, KnownPart part, const T& figure) {
  return known.has(part) ? std::optional(figure) : std::nullopt;
}

BatteryFigures batteryFigures(const BatteryStats& battery, const KnownParts& known) {
  return {.percent = battery.percent,
          .isCharging = battery.isCharging,
          .onAC = battery.onAC,
          .minutesRemaining = battery.minutesRemaining,
          .cycles = ifKnown(known, KnownPart::batteryCycles, battery.cycles),
          .health = ifKnown(known, KnownPart::batteryHealth, battery.health),
          .temperature = ifKnown(known, KnownPart::batteryTemperature, battery.temperature)};
}

void fill(MachineAnswer& answer, const SystemSnapshot& snapshot, const KnownParts& known) {
  using enum KnownPart;
  const auto& cpu = snapshot.cpu;
  answer.date = snapshot.date;
  if (known.has(processor))
    answer.cpu = {cpu.total, cpu.user, cpu.system, ifKnown(known, load, cpu.load1),
                  std::uint32_t(cpu.perCore.size())};
  answer.memory = ifKnown(known, memory, snapshot.memory);
  answer.disk = {ifKnown(known, disks, snapshot.disk.readRate),
                 ifKnown(known, disks, snapshot.disk.writeRate),
                 ifKnown(known, volumes, snapshot.disk.volumes)};
  answer.network = ifKnown(known, network, snapshot.network);
  if (known.has(graphics) || known.has(graphicsMemory))
    answer.gpu = {snapshot.gpu.name, ifKnown(known, graphics, snapshot.gpu.utilization),
                  ifKnown(known, graphicsMemory, snapshot.gpu.memoryInUse)};
  if (known.has(battery) && snapshot.battery.present)
    answer.battery = batteryFigures(snapshot.battery, known);
  answer.power = ifKnown(known, power, snapshot.battery.systemPower);
  for (const auto& row : allCases<KnownPart>())
    if (!known.has(row.value)) answer.unread.push_back(row.value);
}

Result<Value> readMachine(Readings& readings, const Value&, const Cancellation&) {
  Reading reading(readings, {"snapshot", "known", "report", "sensors"});
  const auto measured = reading.measurement();
  MachineAnswer answer;
  fill(answer, measured.snapshot, measured.known);
  if (const auto sensors = reading.sensors()) {
    answer.cpuCelsius = sensors->cpuCelsius;
    answer.gpuCelsius = sensors->gpuCelsius;
  }
  answer.uptime = std::uint64_t(std::max(0.0, readings.services().host.state->uptime().count()));
  answer.source = reading.source();
  return toValue(answer);
}

} // namespace

ReadingTool healthTool() {
  return {
      "health",
      "Health",
      "The computer's health as a score from 0 to 100, and what lowers it, the most severe first, each with "
      "its fix. A fix with a tool and a handle can be carried out by that tool.",
      schema::object({}),
      schema::of<HealthAnswer>(),
      readHealth};
}

ReadingTool machineTool() {
  return {
      "machine",
      "The machine now",
      "Processor, memory, disks and volumes, network, graphics, battery, power and temperatures as they are "
      "now. What can't be read here is absent and named in unread.",
      schema::object({}),
      schema::of<MachineAnswer>(),
      readMachine};
}

} // namespace korvell
