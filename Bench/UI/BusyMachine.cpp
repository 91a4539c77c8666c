#include "Bench/UI/BusyMachine.h"

#include "Base/LocalTime.h"
#include "Bench/History/Month.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::size_t differentSteps = 64;
constexpr int liveSteps = 150; ///< of two seconds

} // namespace

BusyMachine::BusyMachine(const Queue& main, const UserDefaults& defaults, Date now) : Model(main, defaults) {
  madeUp_.resize(differentSteps, SystemSnapshot::empty(now));
  for (auto& snapshot : madeUp_) fill(snapshot);
  for (std::size_t i = 0; i < differentSteps; ++i) sensed_.push_back(readSensors());
  publishLists(now);
  for (int i = liveSteps; i > 0; --i) step(now - Seconds{i * 2.0});
}

void BusyMachine::step(Date date) {
  const auto place = steps_++ % differentSteps;
  madeUp_[place].date = date;
  Publication publication;
  publication.set(snapshot, madeUp_[place]);
  publication.set(sensors, std::optional(sensed_[place]));
  publication.setIfChanged(hasSample, true);
  extendLiveSeries(publication);
  publication.set(cycle, *cycle + 1);
}

void BusyMachine::publishLists(Date now) {
  KnownParts parts = *known;
  for (const auto& part : allCases<KnownPart>()) parts.set(part.value, Knowledge::fresh);
  known.set(parts);
  HealthReport found;
  found.score = 87;
  found.insights = {{Insight::Severity::warning, "Disk space is getting low", "41.2 GB free.", 8, {}}};
  report.set(found);
  const std::vector<DevServer> servers(5);
  projects.set({{"herbarium", servers}, {"greenhouse", servers}});
  startupItems.set(std::vector<StartupItem>(80, {.label = "org.example.agent"}));
  std::vector<HealthAlert> told;
  for (int i = 0; i < 60; ++i)
    told.push_back({.id = std::to_string(i),
                    .kind = HealthAlert::Kind::cpu,
                    .title = "Blender is keeping the CPU busy",
                    .date = now - Seconds{i * 7000.0}});
  alerts.set(told);
}

/// All figures move, the machine's by up to a fifth of their scale.
void BusyMachine::fill(SystemSnapshot& s) {
  for (auto& level : levels_) level = std::clamp(level + upTo(0.4) - 0.2, 0.05, 0.95);
  const auto [cpu, memory, read, written, in, out, gpu, power] = levels_;
  s.cpu = {.total = cpu * 100, .user = cpu * 80, .system = cpu * 20, .perCore = {}, .load1 = cpu * 4};
  for (int i = 0; i < 16; ++i) s.cpu.perCore.push_back(upTo(cpu * 100));
  s.memory = {
      .total = 16ull << 30, .app = std::uint64_t(memory * 9e9), .wired = 2ull << 30, .cached = 3ull << 30};
  s.disk = {.readRate = read * 1e7,
            .writeRate = written * 1e7,
            .volumes = {{"System disk", "/", 249'000'000'000, std::int64_t(memory * 9e10)}}};
  s.network = {.inRate = in * 1e7, .outRate = out * 1e6, .interface = "Ethernet"};
  s.gpu = {.name = "Graphics", .utilization = gpu * 100};
  s.battery = {.present = true, .percent = 74, .health = 91, .systemPower = power * 30};
  for (int i = 0; i < 250; ++i) {
    const auto known = app(i);
    AppUsage usage{.id = known.id, .name = known.name, .bundlePath = known.path};
    for (int p = 0; p < 6; ++p)
      usage.processes.push_back({.pid = 1000 + i * 6 + p,
                                 .name = usage.name,
                                 .cpu = upTo(20),
                                 .memory = std::uint64_t(upTo(3e8)),
                                 .diskRead = upTo(1e6),
                                 .diskWrite = upTo(1e6),
                                 .netIn = upTo(1e6),
                                 .power = upTo(2)});
    s.apps.push_back(std::move(usage));
  }
}

SensorsSnapshot BusyMachine::readSensors() {
  SensorsSnapshot read{.cpuCelsius = 40 + upTo(40), .gpuCelsius = 40 + upTo(30), .socCelsius = std::nullopt};
  for (int i = 0; i < 4; ++i)
    read.fans.push_back({fmt::format("fan{}", i), fmt::format("Fan {}", i), 800 + upTo(400), 300, 2100});
  for (int i = 0; i < 26; ++i)
    read.temperatures.push_back(
        {fmt::format("Sensor {}", i), 30 + upTo(40), SensorKind::other, fmt::format("chip{}", i / 5)});
  return read;
}

SoundState busySound() {
  SoundState state{.connection = SoundConnection::connected,
                   .output = OutputDevice{.name = "Built-in Audio Analog Stereo", .volume = 0.65}};
  for (int i = 0; i < 25; ++i) {
    const auto name = fmt::format("Player {:02}", i);
    state.apps.push_back({.key = name,
                          .name = name,
                          .volume = 0.5 + i / 25.0,
                          .playing = true,
                          .isRemembered = true,
                          .level = i / 25.0});
    state.remembered.push_back({.key = name, .name = name, .volume = 0.5 + i / 25.0});
  }
  return state;
}

/// Every model in every project on every day.
AIUsageSummary busyAIUsage(Date now, const TimeZone& zone) {
  constexpr const char* models[] = {
      "claude-opus-5-5", "claude-sonnet-5", "claude-haiku-4-5", "gpt-5.6-sol",       "gpt-5.3-codex",
      "gpt-5.5",         "a-local-model",   "claude-opus-4-5",  "claude-sonnet-4-5", "another-local-model"};
  AIUsageSummary summary{.rows = {}, .codexLimits = {}, .updatedAt = now - Seconds{60}, .lastScan = {}};
  for (int daysAgo = 29; daysAgo >= 0; --daysAgo) {
    const auto day = startOfDay(zone, localDay(zone, now) + (-daysAgo));
    for (int m = 0; m < int(std::size(models)); ++m)
      for (int project = 0; project < 40; ++project) {
        const Counts counts{.input = 1'000 * (m + 1),
                            .output = 900 * (project + 1),
                            .cacheWrite = 5'000,
                            .cacheRead = 40'000 + daysAgo * 500};
        summary.rows.push_back({.day = day,
                                .tool = m % 2 ? AITool::codex : AITool::claude,
                                .model = models[m],
                                .project = fmt::format("project-{:02}", project),
                                .tokens = {counts.input, counts.output, counts.cacheWrite, counts.cacheRead},
                                .cost = listCost(models[m], counts)});
      }
  }
  return summary;
}

StorageScanResult fullScan(Date now) {
  StorageScanResult found{.categories = {}, .date = now};
  for (const auto& kind : allCases<StorageKind>()) {
    auto& category = found.categories.emplace_back(StorageCategory{kind.value});
    for (int i = 0; i < 200; ++i) {
      const auto place = fmt::format("/home/u/{}/found-{:03}", kind.rawValue, i);
      const std::int64_t bytes = 900'000'000 - i * 4'000'000;
      category.bytes += bytes;
      category.items.push_back({.id = place,
                                .kind = kind.value,
                                .title = fmt::format("found-{:03}", i),
                                .detail = place,
                                .bytes = bytes,
                                .urls = {place},
                                .date = now - Seconds{i * 86'400.0}});
    }
  }
  return found;
}

} // namespace korvell
