#include "Agents/Metrics.h"

#include "Core/DevServers/DevServerRules.h"

#include <algorithm>
#include <map>

namespace korvell {

namespace {

using enum MetricsText::Type;

/// Figures of any number of things, each under its name as a label tells it; those of one name are one.
template <class Figures>
using Named = std::vector<std::pair<std::string, Figures>>;

constexpr const char* otherName = "other";

/// The largest ones by name, the rest together as "other", which is left out where there is none.
template <class Figures, class Size>
Named<Figures> bounded(std::map<std::string, Figures> all, Size size) {
  Figures rest{};
  bool hasRest = false;
  const auto addToRest = [&](const Figures& figures) {
    rest += figures;
    hasRest = true;
  };
  if (const auto other = all.extract(otherName)) addToRest(other.mapped());
  Named<Figures> sorted(all.begin(), all.end());
  std::ranges::stable_sort(sorted, std::greater(), [&](const auto& named) { return size(named.second); });
  while (sorted.size() > mostLabelled) {
    addToRest(sorted.back().second);
    sorted.pop_back();
  }
  if (hasRest) sorted.emplace_back(otherName, rest);
  return sorted;
}

// The machine

void addSelf(MetricsText& text, const MetricsReading& reading, std::string_view version) {
  text.family("build", info, Unit::none, "The Korvell that tells these figures.");
  text.sample(1, {{"version", std::string(version)}});
  text.gauge("sample_timestamp", Unit::seconds, "When the machine was measured, since 1970.",
             reading.snapshot.date.sinceEpoch);
  text.gauge("keeper_running", Unit::none, "1 while a Korvell keeps: measures, records and alerts.",
             reading.keeper ? 1 : 0);
  if (reading.isRecording)
    text.gauge("history_recording", Unit::none, "1 while the history can be written.",
               *reading.isRecording ? 1 : 0);
  if (!reading.keeper) return;
  for (const auto& app : reading.snapshot.apps)
    for (const auto& process : app.processes) {
      if (process.pid != *reading.keeper) continue;
      text.gauge("keeper_cpu_usage", unitOf(&ProcessUsage::cpu), "Processor cores that the keeper uses.",
                 process.cpu);
      text.gauge("keeper_memory", unitOf(&ProcessUsage::memory), "Memory that the keeper uses.",
                 double(process.memory));
    }
}

void addHealth(MetricsText& text, const HealthReport& report) {
  text.gauge("health_score", Unit::none, "The health score from 0 to 100.", report.score);
  text.family("findings", gauge, Unit::none, "Findings that lower the score, by severity.");
  for (const auto& severity : allCases<Insight::Severity>())
    text.sample(double(std::ranges::count(report.insights, severity.value, &Insight::severity)),
                {{"severity", std::string(severity.rawValue)}});
  std::map<std::string, int> points{{"none", 0}};
  for (const auto& kind : allCases<Insight::Action::Kind>()) points[std::string(kind.rawValue)] = 0;
  for (const auto& insight : report.insights)
    points[insight.action ? std::string(rawValue(insight.action->kind)) : "none"] += insight.penalty;
  text.family("score_points_lost", gauge, Unit::none, "Points that findings take, by what mends them.");
  for (const auto& [fix, lost] : points) text.sample(lost, {{"fix", fix}});
}

void addProcessor(MetricsText& text, const CPUStats& cpu, const KnownParts& known) {
  if (known.has(KnownPart::processor)) {
    text.family("cpu_usage", gauge, unitOf(&CPUStats::total), "Share of all cores in use.");
    text.sample(cpu.user, {{"mode", "user"}});
    text.sample(cpu.system, {{"mode", "system"}});
    text.family("cpu_core_usage", gauge, unitOf(&CPUStats::perCore), "Share of each core in use.");
    for (std::size_t core = 0; core < cpu.perCore.size(); ++core)
      text.sample(cpu.perCore[core], {{"core", std::to_string(core)}});
  }
  if (known.has(KnownPart::load)) text.gauge("load1", Unit::none, "Load average over one minute.", cpu.load1);
}

void addMemory(MetricsText& text, const MemoryStats& memory) {
  const auto unit = unitOf(&MemoryStats::app);
  text.gauge("memory_size", unit, "Physical memory.", double(memory.total));
  text.family("memory", gauge, unit, "Physical memory by what it is used for.");
  const std::pair<const char*, std::uint64_t> uses[] = {{"app", memory.app},
                                                        {"wired", memory.wired},
                                                        {"compressed", memory.compressed},
                                                        {"cached", memory.cached},
                                                        {"free", memory.free}};
  for (const auto& [use, bytes] : uses) text.sample(double(bytes), {{"use", use}});
  text.gauge("swap_used", unit, "Swap space in use.", double(memory.swapUsed));
  text.gauge("memory_pressure", Unit::none, "0 normal, 1 warning, 2 critical.", int(memory.pressure));
}

void addVolumes(MetricsText& text, const std::vector<VolumeInfo>& volumes) {
  const auto shown = std::min(volumes.size(), mostLabelled);
  const auto add = [&](const char* name, const char* help, auto member) {
    text.family(name, gauge, unitOf(member), help);
    for (std::size_t i = 0; i < shown; ++i)
      text.sample(double(volumes[i].*member), {{"mountpoint", volumes[i].url}, {"name", volumes[i].name}});
  };
  add("volume_size", "Size of a volume.", &VolumeInfo::total);
  add("volume_available", "Room on a volume that the user may fill.", &VolumeInfo::available);
}

void addTraffic(MetricsText& text, const SystemSnapshot& snapshot, const KnownParts& known) {
  if (known.has(KnownPart::disks)) {
    text.gauge("disk_read", unitOf(&DiskStats::readRate), "Read from all disks.", snapshot.disk.readRate);
    text.gauge("disk_write", unitOf(&DiskStats::writeRate), "Written to all disks.", snapshot.disk.writeRate);
  }
  if (known.has(KnownPart::volumes)) addVolumes(text, snapshot.disk.volumes);
  if (!known.has(KnownPart::network)) return;
  text.family("network_receive", counter, unitOf(&NetworkStats::totalIn),
              "Received by all interfaces, as the kernel counts.");
  text.sample(double(snapshot.network.totalIn));
  text.family("network_transmit", counter, unitOf(&NetworkStats::totalOut),
              "Sent by all interfaces, as the kernel counts.");
  text.sample(double(snapshot.network.totalOut));
}

void addGraphics(MetricsText& text, const GPUStats& gpu, const KnownParts& known) {
  if (known.has(KnownPart::graphics))
    text.gauge("gpu_usage", unitOf(&GPUStats::utilization), "Share of the graphics processor in use.",
               gpu.utilization);
  if (known.has(KnownPart::graphicsMemory))
    text.gauge("gpu_memory", unitOf(&GPUStats::memoryInUse), "Graphics memory in use.",
               double(gpu.memoryInUse));
}

void addPower(MetricsText& text, const BatteryStats& battery, const KnownParts& known) {
  if (known.has(KnownPart::power))
    text.gauge("power", unitOf(&BatteryStats::systemPower), "What the whole machine draws.",
               battery.systemPower);
  if (!battery.present || !known.has(KnownPart::battery)) return;
  text.gauge("battery_charge", unitOf(&BatteryStats::percent), "Charge of the battery.", battery.percent);
  text.gauge("battery_charging", Unit::none, "1 while the battery is being charged.", battery.isCharging);
  text.gauge("external_power", Unit::none, "1 on external power.", battery.onAC);
  if (known.has(KnownPart::batteryHealth))
    text.gauge("battery_health", unitOf(&BatteryStats::health), "Full charge against the design's.",
               battery.health);
  if (known.has(KnownPart::batteryCycles))
    text.gauge("battery_cycles", Unit::none, "Charging cycles of the battery.", battery.cycles);
  if (known.has(KnownPart::batteryTemperature))
    text.gauge("battery_temperature", unitOf(&BatteryStats::temperature), "Temperature of the battery.",
               battery.temperature);
}

void addSensors(MetricsText& text, const SensorsSnapshot& sensors) {
  text.family("temperature", gauge, unitOf(&TemperatureReading::celsius), "What a sensor tells, by chip.");
  for (const auto& reading : sensors.temperatures)
    text.sample(reading.celsius, {{"chip", reading.chip.value_or("")},
                                  {"sensor", reading.name},
                                  {"kind", std::string(rawValue(reading.kind))}});
  text.family("fan_speed", gauge, unitOf(&FanReading::rpm), "Speed of a fan.");
  for (const auto& fan : sensors.fans) text.sample(fan.rpm, {{"fan", fan.id}, {"name", fan.name}});
}

void addPeripherals(MetricsText& text, const std::vector<PeripheralBattery>& batteries) {
  text.family("peripheral_charge", gauge, unitOf(&PeripheralBattery::percent), "Charge of a peripheral.");
  for (const auto& battery : batteries)
    text.sample(battery.percent, {{"name", battery.name}, {"kind", std::string(rawValue(battery.kind))}});
}

// Applications

struct AppFigures {
  double cpu = 0, memory = 0, diskRead = 0, diskWrite = 0, netIn = 0, netOut = 0, power = 0;
  double processes = 0;

  AppFigures& operator+=(const AppFigures& other) {
    cpu += other.cpu;
    memory += other.memory;
    diskRead += other.diskRead;
    diskWrite += other.diskWrite;
    netIn += other.netIn;
    netOut += other.netOut;
    power += other.power;
    processes += other.processes;
    return *this;
  }
};

AppFigures figuresOf(const AppUsage& app) {
  return {app.cpu(),   double(app.memory()), app.diskRead(), app.diskWrite(),
          app.netIn(), app.netOut(),         app.power(),    double(app.processes.size())};
}

class AppFamilies {
public:
  AppFamilies(MetricsText& text, const Named<AppFigures>& apps) : text_(text), apps_(apps) {}

  void add(const char* name, Unit unit, const char* help, double AppFigures::*figure) const {
    text_.family(name, gauge, unit, help);
    for (const auto& [app, figures] : apps_) text_.sample(figures.*figure, {{"app", app}});
  }
  void addDirections(const char* name, const char* help, std::pair<const char*, double AppFigures::*> in,
                     std::pair<const char*, double AppFigures::*> out) const {
    text_.family(name, gauge, unitOf(&ProcessUsage::diskRead), help);
    for (const auto& [app, figures] : apps_)
      for (const auto& [direction, figure] : {in, out})
        text_.sample(figures.*figure, {{"app", app}, {"direction", direction}});
  }

private:
  MetricsText& text_;
  const Named<AppFigures>& apps_;
};

/// An application is as large as the part of the machine that it takes.
Named<AppFigures> largestApps(const SystemSnapshot& snapshot) {
  std::map<std::string, AppFigures> byName;
  for (const auto& app : snapshot.apps) byName[MetricsText::labelText(app.name)] += figuresOf(app);
  const double cores = 100 * double(std::max<std::size_t>(snapshot.cpu.perCore.size(), 1));
  const double memory = std::max(double(snapshot.memory.total), 1.0);
  return bounded(std::move(byName),
                 [=](const AppFigures& figures) { return figures.cpu / cores + figures.memory / memory; });
}

void addApps(MetricsText& text, const MetricsReading& reading) {
  const auto& known = reading.known;
  if (!known.has(KnownPart::processes)) return;
  const auto apps = largestApps(reading.snapshot);
  const AppFamilies families(text, apps);
  using App = AppFigures;
  families.add("app_cpu_usage", unitOf(&ProcessUsage::cpu), "Processor cores that an application uses.",
               &App::cpu);
  families.add("app_memory", unitOf(&ProcessUsage::memory), "Memory that an application uses.", &App::memory);
  families.addDirections("app_disk", "What an application reads and writes.", {"read", &App::diskRead},
                         {"write", &App::diskWrite});
  if (known.has(KnownPart::processTraffic))
    families.addDirections("app_network", "What an application receives and sends.", {"receive", &App::netIn},
                           {"transmit", &App::netOut});
  if (known.has(KnownPart::processEnergy))
    families.add("app_power", unitOf(&ProcessUsage::power), "Power that an application draws.", &App::power);
  families.add("app_processes", Unit::none, "Processes of an application.", &App::processes);
  if (reading.privileged)
    text.gauge("processes_hidden", Unit::none, "Processes of which the system hides figures from this user.",
               reading.privileged->hidden);
}

// What only a keeper knows

void addServers(MetricsText& text, const MetricsReading& reading) {
  if (!reading.projects) return;
  double count = 0, memory = 0;
  for (const auto& project : *reading.projects)
    for (const auto& server : project.servers) {
      ++count;
      memory += double(server.memory);
    }
  text.gauge("dev_servers", Unit::none, "Development servers that run.", count);
  text.gauge("dev_servers_idle", Unit::none, "Development servers that did nothing for half an hour.",
             double(idleServers(*reading.projects, reading.now).size()));
  text.gauge("dev_servers_memory", unitOf(&DevServer::memory), "Memory of the development servers.", memory);
}

void addAlerts(MetricsText& text, const MetricsReading& reading) {
  if (!reading.alerts) return;
  constexpr Seconds day{86'400};
  text.family("alerts_day", gauge, Unit::none, "Alerts that were raised in the last 24 hours.");
  for (const auto& kind : allCases<HealthAlert::Kind>())
    text.sample(double(std::ranges::count_if(*reading.alerts,
                                             [&](const HealthAlert& alert) {
                                               return alert.kind == kind.value &&
                                                      reading.now - alert.date < day;
                                             })),
                {{"kind", std::string(kind.rawValue)}});
  text.family("alert_timestamp", gauge, Unit::seconds,
              "When the last alert of a kind was raised, since 1970.");
  for (const auto& kind : allCases<HealthAlert::Kind>()) {
    const auto last = std::ranges::find(*reading.alerts, kind.value, &HealthAlert::kind);
    if (last != reading.alerts->end())
      text.sample(last->date.sinceEpoch, {{"kind", std::string(kind.rawValue)}});
  }
}

struct ModelFigures {
  AITokens tokens;
  std::optional<double> cost;

  ModelFigures& operator+=(const ModelFigures& other) {
    tokens += other.tokens;
    if (other.cost) cost = cost.value_or(0) + *other.cost;
    return *this;
  }
};

struct Span {
  const char* tokensName;
  const char* tokensHelp;
  const char* costName;
  const char* costHelp;
};

void addUsage(MetricsText& text, const std::vector<AIUsageRow>& rows, Date since, const Span& span) {
  std::map<std::string, std::map<std::string, ModelFigures>> byTool;
  for (const auto& row : rows)
    if (row.day >= since)
      byTool[std::string(rawValue(row.tool))][MetricsText::labelText(row.model)] +=
          ModelFigures{row.tokens, row.cost};
  std::map<std::string, Named<ModelFigures>> tools;
  for (auto& [tool, models] : byTool)
    tools[tool] =
        bounded(std::move(models), [](const ModelFigures& figures) { return figures.tokens.total(); });
  const auto forEach = [&](const auto& tell) {
    for (const auto& [tool, models] : tools)
      for (const auto& [model, figures] : models) tell(tool, model, figures);
  };
  text.family(span.tokensName, gauge, Unit::none, span.tokensHelp);
  forEach([&](const std::string& tool, const std::string& model, const ModelFigures& figures) {
    const auto& tokens = figures.tokens;
    const std::pair<const char*, std::int64_t> kinds[] = {{"input", tokens.input},
                                                          {"output", tokens.output},
                                                          {"cacheWrite", tokens.cacheWrite},
                                                          {"cacheRead", tokens.cacheRead}};
    for (const auto& [kind, count] : kinds)
      text.sample(double(count), {{"tool", tool}, {"model", model}, {"kind", kind}});
  });
  text.family(span.costName, gauge, Unit::dollars, span.costHelp);
  forEach([&](const std::string& tool, const std::string& model, const ModelFigures& figures) {
    if (figures.cost) text.sample(*figures.cost, {{"tool", tool}, {"model", model}});
  });
}

void addAIUsage(MetricsText& text, const MetricsReading& reading) {
  if (!reading.aiUsage || !reading.today) return;
  addUsage(text, *reading.aiUsage, *reading.today,
           {"ai_tokens_today", "Tokens that AI coding tools used since midnight.", "ai_cost_today",
            "What today's tokens would cost at list prices; models without a price are left out."});
  addUsage(text, *reading.aiUsage, Date::distantPast(),
           {"ai_tokens_30d", "Tokens that AI coding tools used in thirty days, today included.",
            "ai_cost_30d", "What the tokens of thirty days would cost at list prices."});
}

void addStorage(MetricsText& text, const MetricsReading& reading) {
  text.family("storage_freed", counter, Unit::bytes, "Freed by clean-ups so far.");
  text.sample(double(reading.freed));
  const auto each = [&](const auto& figure) {
    for (const auto& [kind, found] : reading.reclaimable)
      text.sample(figure(found), {{"kind", std::string(rawValue(kind))}});
  };
  text.family("storage_reclaimable", gauge, Unit::bytes, "What the last scan of a kind could give back.");
  each([](const StorageFound& found) { return double(found.bytes); });
  text.family("storage_scan_timestamp", gauge, Unit::seconds, "When a kind was last scanned, since 1970.");
  each([](const StorageFound& found) { return found.date.sinceEpoch; });
}

} // namespace

std::string metricsText(const MetricsReading& reading, MetricsFormat format, std::string_view version) {
  MetricsText text(format);
  const auto& snapshot = reading.snapshot;
  const auto& known = reading.known;
  addSelf(text, reading, version);
  addHealth(text, reading.report);
  addProcessor(text, snapshot.cpu, known);
  if (known.has(KnownPart::memory)) addMemory(text, snapshot.memory);
  addTraffic(text, snapshot, known);
  addGraphics(text, snapshot.gpu, known);
  addPower(text, snapshot.battery, known);
  if (reading.sensors) addSensors(text, *reading.sensors);
  if (reading.peripherals) addPeripherals(text, *reading.peripherals);
  addApps(text, reading);
  addServers(text, reading);
  addAlerts(text, reading);
  addAIUsage(text, reading);
  addStorage(text, reading);
  return std::move(text).finish();
}

} // namespace korvell
