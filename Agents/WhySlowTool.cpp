// The tool "why_slow": everything that tells why the computer is slow, in one answer.

#include "Agents/HistoryFigures.h"
#include "Agents/ReadingTools.h"
#include "Agents/UsageFigures.h"

#include <cmath>
#include <map>

namespace korvell {

namespace {

constexpr std::size_t shownApps = 5;
constexpr Seconds shortWhile{600}, longWhile{3600};
/// Smaller changes are everyday ones.
constexpr double cpuChange = 20, memoryChange = 256.0 * 1024 * 1024, changeFactor = 1.3;

struct Heaviest {
  std::vector<AppShare> cpu, memory, disk, network;

  static constexpr auto fields() {
    return std::tuple{Field{"cpu", &Heaviest::cpu}, Field{"memory", &Heaviest::memory},
                      Field{"disk", &Heaviest::disk}, Field{"network", &Heaviest::network}};
  }
};

struct HeaviestNow {
  std::vector<AppFigures> cpu, memory; ///< with handles
  std::vector<AppShare> disk, network;

  static constexpr auto fields() {
    return std::tuple{Field{"cpu", &HeaviestNow::cpu}, Field{"memory", &HeaviestNow::memory},
                      Field{"disk", &HeaviestNow::disk}, Field{"network", &HeaviestNow::network}};
  }
};

/// An application that uses much more, or less, than in the hour before.
struct Change {
  std::string name;
  Metric metric = Metric::cpu;
  double before = 0, lately = 0;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &Change::name}, Field{"metric", &Change::metric},
                      Field{"before", &Change::before}, Field{"lately", &Change::lately}};
  }
};

struct Pressure {
  std::optional<double> cpu, load1;
  std::uint32_t cores = 0;
  std::optional<double> cpuTenMinutes, cpuHour;
  std::optional<MemoryStats::Pressure> memoryPressure;
  std::optional<std::uint64_t> memoryTotal, memoryUsed, swapUsed;
  std::optional<double> diskRead, diskWrite;
  std::optional<std::vector<VolumeInfo>> volumes;
  ThermalState thermalState = ThermalState::nominal;
  std::optional<double> cpuCelsius;

  static constexpr auto fields() {
    return std::tuple{Field{"cpu", &Pressure::cpu, Unit::percent},
                      Field{"load1", &Pressure::load1},
                      Field{"cores", &Pressure::cores},
                      Field{"cpuTenMinutes", &Pressure::cpuTenMinutes, Unit::percent},
                      Field{"cpuHour", &Pressure::cpuHour, Unit::percent},
                      Field{"memoryPressure", &Pressure::memoryPressure},
                      Field{"memoryTotal", &Pressure::memoryTotal, Unit::memory},
                      Field{"memoryUsed", &Pressure::memoryUsed, Unit::memory},
                      Field{"swapUsed", &Pressure::swapUsed, Unit::memory},
                      Field{"diskRead", &Pressure::diskRead, Unit::bytesPerSecond},
                      Field{"diskWrite", &Pressure::diskWrite, Unit::bytesPerSecond},
                      Field{"volumes", &Pressure::volumes},
                      Field{"thermalState", &Pressure::thermalState},
                      Field{"cpuCelsius", &Pressure::cpuCelsius, Unit::celsius}};
  }
};

struct Cause {
  Insight::Severity severity = Insight::Severity::info;
  std::string title, detail;

  static constexpr auto fields() {
    return std::tuple{Field{"severity", &Cause::severity}, Field{"title", &Cause::title},
                      Field{"detail", &Cause::detail}};
  }
};

struct WhySlowAnswer {
  int score = 100;
  std::string label;
  std::vector<Cause> findings;
  Pressure pressure;
  HeaviestNow now;
  Heaviest lastTenMinutes, lastHour;
  std::vector<Change> changes;
  std::vector<HealthAlert> alerts; ///< of the last hour
  std::uint64_t uptime = 0;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{
        Field{"score", &WhySlowAnswer::score},       Field{"label", &WhySlowAnswer::label},
        Field{"findings", &WhySlowAnswer::findings}, Field{"pressure", &WhySlowAnswer::pressure},
        Field{"now", &WhySlowAnswer::now},           Field{"lastTenMinutes", &WhySlowAnswer::lastTenMinutes},
        Field{"lastHour", &WhySlowAnswer::lastHour}, Field{"changes", &WhySlowAnswer::changes},
        Field{"alerts", &WhySlowAnswer::alerts},     Field{"uptime", &WhySlowAnswer::uptime, Unit::seconds},
        Field{"source", &WhySlowAnswer::source}};
  }
};

// Now

std::vector<AppUsage> largest(std::vector<AppUsage> apps, UsageKey key) {
  sortByUsage(apps, key);
  std::erase_if(apps, [key](const AppUsage& app) { return usageValue(key, app) <= 0; });
  if (apps.size() > shownApps) apps.resize(shownApps);
  return apps;
}

HeaviestNow heaviestNow(const Measurement& measured, Readings& readings) {
  const auto figures = [&](UsageKey key) {
    std::vector<AppFigures> result;
    for (const auto& app : largest(measured.snapshot.apps, key))
      result.push_back(figuresOf(app, measured.known, readings, measured.snapshot.date));
    return result;
  };
  const auto shares = [&](UsageKey key) {
    std::vector<AppShare> result;
    for (const auto& app : largest(measured.snapshot.apps, key))
      result.push_back({app.name, usageValue(key, app)});
    return result;
  };
  return {figures(UsageKey::cpu), figures(UsageKey::memory), shares(UsageKey::disk),
          shares(UsageKey::network)};
}

Pressure pressureOf(const Measurement& measured) {
  using enum KnownPart;
  const auto& [snapshot, known] = std::tie(measured.snapshot, measured.known);
  Pressure pressure{.cores = std::uint32_t(snapshot.cpu.perCore.size())};
  if (known.has(processor)) pressure.cpu = snapshot.cpu.total;
  if (known.has(load)) pressure.load1 = snapshot.cpu.load1;
  if (known.has(memory)) {
    pressure.memoryPressure = snapshot.memory.pressure;
    pressure.memoryTotal = snapshot.memory.total;
    pressure.memoryUsed = snapshot.memory.used();
    pressure.swapUsed = snapshot.memory.swapUsed;
  }
  if (known.has(disks)) {
    pressure.diskRead = snapshot.disk.readRate;
    pressure.diskWrite = snapshot.disk.writeRate;
  }
  if (known.has(volumes)) pressure.volumes = snapshot.disk.volumes;
  return pressure;
}

// Before

Heaviest heaviest(HistoryStore& store, Date begin, Date end) {
  const auto of = [&](Metric metric) { return sharesOf(store.topApps(metric, begin, end, int(shownApps))); };
  return {of(Metric::cpu), of(Metric::memory), of(Metric::disk), of(Metric::network)};
}

void addChanges(std::vector<Change>& changes, HistoryStore& store, Metric metric, double least, Date now) {
  constexpr int many = 100;
  std::map<std::string, std::pair<double, double>> values; // before, lately
  for (const auto& app : store.topApps(metric, now - longWhile, now - shortWhile, many))
    values[app.name].first = app.value;
  for (const auto& app : store.topApps(metric, now - shortWhile, now, many))
    values[app.name].second = app.value;
  std::vector<Change> found;
  for (const auto& [name, value] : values) {
    const auto [before, lately] = value;
    const auto smaller = std::min(before, lately), larger = std::max(before, lately);
    if (larger - smaller >= least && larger >= smaller * changeFactor)
      found.push_back({name, metric, before, lately});
  }
  std::ranges::stable_sort(found, std::greater(),
                           [](const Change& change) { return std::abs(change.lately - change.before); });
  if (found.size() > shownApps) found.resize(shownApps);
  changes.insert(changes.end(), found.begin(), found.end());
}

void addHistory(WhySlowAnswer& answer, Readings& readings) {
  const auto store = readings.history();
  const auto now = readings.now();
  constexpr int few = 5;
  const auto since = store->recordedSince();
  if (!since || *since > now) {
    answer.source.leavesOut.push_back(localized("Nothing was recorded before this moment."));
    return;
  }
  answer.lastTenMinutes = heaviest(*store, now - shortWhile, now);
  answer.lastHour = heaviest(*store, now - longWhile, now);
  answer.pressure.cpuTenMinutes = store->recordedAverage(Metric::cpu, now - shortWhile, few);
  answer.pressure.cpuHour = store->recordedAverage(Metric::cpu, now - longWhile, few);
  // What an application used is compared with the time before only where there is such a time.
  if (*since > now - longWhile + shortWhile) return;
  addChanges(answer.changes, *store, Metric::cpu, cpuChange, now);
  addChanges(answer.changes, *store, Metric::memory, memoryChange, now);
}

Result<Value> readWhySlow(Readings& readings, const Value&, const Cancellation&) {
  Reading reading(readings, {"snapshot", "known", "report", "alerts", "sensors"});
  const auto measured = reading.measurement();
  auto& state = *readings.services().host.state;
  WhySlowAnswer answer{.score = measured.report.score, .label = measured.report.label()};
  for (const auto& insight : measured.report.insights)
    answer.findings.push_back({insight.severity, insight.title, insight.detail});
  answer.pressure = pressureOf(measured);
  state.refresh();
  answer.pressure.thermalState = state.thermalState();
  if (const auto sensors = reading.sensors()) answer.pressure.cpuCelsius = sensors->cpuCelsius;
  answer.now = heaviestNow(measured, readings);
  answer.alerts = reading.alerts();
  std::erase_if(answer.alerts,
                [&](const HealthAlert& alert) { return alert.date < readings.now() - longWhile; });
  answer.uptime = std::uint64_t(std::max(0.0, state.uptime().count()));
  answer.source = reading.source({"Alerts and the CPU over the last ten minutes need a running Korvell."});
  addHistory(answer, readings);
  return toValue(answer);
}

} // namespace

ReadingTool whySlowTool() {
  return {
      "why_slow",
      "Why is it slow?",
      "Begin here. One answer with the evidence: what the health score finds, pressure on processor, memory, "
      "disk and temperature, the heaviest applications now (with handles for quit_app), over the last ten "
      "minutes and the last hour, what has changed since, and the alerts of the last hour. Applications' "
      "cpu is in percent of one core, the machine's in percent of all.",
      schema::object({}),
      schema::of<WhySlowAnswer>(),
      readWhySlow};
}

} // namespace korvell
