#include "UI/Gallery/RecordedMachine.h"

#include "Base/Localization.h"
#include "Core/Machine/Owners.h"
#include "Core/Storage/StorageLog.h"

#include <algorithm>
#include <cmath>
#include <random>

namespace korvell {

namespace {

constexpr std::uint64_t megabyte = 1024 * 1024, gigabyte = 1024 * megabyte;

/// From 0 to 1, the same for the same moment, with hours of work and of rest.
double wave(Date date, double period, double phase) {
  return 0.5 + 0.5 * std::sin(date.sinceEpoch / period * 6.283 + phase);
}

double noise(Date date, int seed) {
  std::mt19937 random(std::uint32_t(std::int64_t(date.sinceEpoch)) * 31 + std::uint32_t(seed));
  return double(random() % 1000) / 1000;
}

/// What an application has of the machine.
struct Share {
  double cpu, memory, disk, network;
};

AppUsage app(const SystemSnapshot& machine, const char* id, const char* name, int processes,
             const Share& of) {
  AppUsage usage{.id = id, .name = name, .bundlePath = {}, .mainPID = {}, .processes = {}};
  for (int i = 0; i < processes; ++i) {
    // The first ones take the most.
    const double share = i == processes - 1 ? std::pow(0.6, i) : std::pow(0.6, i) * 0.4;
    ProcessUsage process{.pid = 8000 + int(std::hash<std::string>{}(id) % 900) + i,
                         .name = i == 1 ? "Web content" : name};
    process.cpu = machine.cpu.total * double(machine.cpu.perCore.size()) * of.cpu * share;
    process.memory = std::uint64_t(double(machine.memory.app) * of.memory * share);
    process.diskRead = machine.disk.readRate * of.disk * share;
    process.diskWrite = machine.disk.writeRate * of.disk * share;
    process.netIn = machine.network.inRate * of.network * share;
    process.netOut = machine.network.outRate * of.network * share;
    process.power = machine.battery.systemPower * 0.7 * of.cpu * share;
    usage.processes.push_back(process);
  }
  return usage;
}

std::string historyFolder(const TemporaryFolder& folder, RecordedMachine::Past past) {
  if (past != RecordedMachine::Past::unreadable) return folder.path().string();
  folder.write("file", ""); // below which there is no folder that could hold one
  return folder / "file/below";
}

} // namespace

void SteppedModel::step(const SystemSnapshot& next, bool isFirst) {
  Publication publication;
  publication.set(snapshot, next);
  if (!isFirst) {
    publication.setIfChanged(hasSample, true);
    extendLiveSeries(publication);
  }
  publication.set(cycle, *cycle + 1);
}

Date RecordedMachine::now() { return *parseRFC3339("2026-11-19T14:42:00Z"); }

SystemSnapshot RecordedMachine::snapshotAt(Date date) {
  SystemSnapshot snapshot = SystemSnapshot::empty(date);
  const double busy = 0.35 * wave(date, 14'000, 1) + 0.25 * wave(date, 2'300, 2) + 0.4 * noise(date, 1);
  const bool isPeak =
      std::fmod(date.sinceEpoch, 86'400) > 47'400 && std::fmod(date.sinceEpoch, 86'400) < 49'600;
  const double load = isPeak ? 88 + 11 * noise(date, 2) : 8 + 34 * busy;
  snapshot.cpu = {.total = load,
                  .user = load * 0.79,
                  .system = load * 0.21,
                  .perCore = {},
                  .performanceCores = 4,
                  .efficiencyCores = 4,
                  .load1 = 2.14};
  for (int i = 0; i < 8; ++i) snapshot.cpu.perCore.push_back(std::clamp(load * (1.7 - 0.16 * i), 0.0, 100.0));
  const double held = 5.6 + 3.4 * wave(date, 40'000, 0.5) + 0.4 * noise(date, 3);
  auto& memory = snapshot.memory;
  memory = {.total = 15 * gigabyte + 620 * megabyte,
            .app = std::uint64_t(held * 0.73 * double(gigabyte)),
            .wired = std::uint64_t(held * 0.15 * double(gigabyte)),
            .compressed = std::uint64_t(held * 0.12 * double(gigabyte)),
            .cached = 3870 * megabyte,
            .swapUsed = 812 * megabyte};
  memory.free = memory.total - memory.used() - memory.cached;
  snapshot.disk = {.readRate = 3.1e6 * busy + 4e5 * noise(date, 4),
                   .writeRate = 1.2e6 * noise(date, 5) + 2e5,
                   .volumes = {{"System", "/", 249'000'000'000, 41'200'000'000},
                               {"Archive", "/media/u/Archive", 2'000'000'000'000, 1'240'000'000'000},
                               {"Camera", "/media/u/Camera", 64'000'000'000, 3'100'000'000}}};
  snapshot.network = {.inRate = 1.9e6 * busy * noise(date, 6) + 2e4,
                      .outRate = 3e5 * noise(date, 7),
                      .interface = localized("Wi-Fi") + " · wlp3s0"};
  snapshot.gpu = {.name = "Integrated graphics",
                  .utilization = 3 + 20 * busy * noise(date, 8),
                  .memoryInUse = 412 * megabyte};
  snapshot.battery = {.present = true,
                      .percent = 74,
                      .isCharging = false,
                      .onAC = false,
                      .cycles = 312,
                      .health = 76,
                      .temperature = 31,
                      .minutesRemaining = 190,
                      .systemPower = 6 + 9 * busy};
  const double render = isPeak ? 0.9 : 0.3, others = (1 - render) / 0.7;
  snapshot.apps = {
      app(snapshot, "org.example.browser", "Firefox", 23, {0.35 * others, 0.42, 0.2, 0.8}),
      app(snapshot, "org.example.render", "Blender", 1, {render, 0.3, 0.4, 0}),
      app(snapshot, "org.example.terminal", "Terminal", 31, {0.2 * others, 0.19, 0.3, 0.05}),
      app(snapshot, linuxSystemGroup.key.data(), "Linux", 214, {0.08 * others, 0.03, 0.05, 0.02}),
      app(snapshot, "org.example.mail", "Thunderbird", 6, {0.03 * others, 0.05, 0.03, 0.1})};
  return snapshot;
}

RecordedMachine::RecordedMachine(Past past)
    : history(scheduler.factory(), scheduler.clock(), historyFolder(folder, past)) {
  scheduler.run();
  if (past == Past::week) recordWeek();
  scheduler.clock().setNow(now());
}

/// Switched off at night: ten minutes apart but for the last day, which is whole.
void RecordedMachine::recordWeek() {
  constexpr double day = 86'400;
  for (Date date = now() - Seconds{7 * day}; date < now();) {
    const bool isToday = now() - date < Seconds{day + 3600};
    const double hour = std::fmod(date.sinceEpoch + 3600, day) / 3600;
    if (hour > 7.6 && hour < 23.8) {
      scheduler.clock().setNow(date);
      history.record(snapshotAt(date), 87);
      scheduler.run();
    }
    date = date + Seconds{isToday ? 60.0 : 600.0};
  }
  StorageLog::record(5'200'000'000, now() - Seconds{0.8 * day}, defaults);
}

void RecordedMachine::measure() {
  KnownParts known;
  for (const auto& part : allCases<KnownPart>()) known.set(part.value, Knowledge::fresh);
  model.known.set(known);
  model.totals.set({.cpuToday = 31,
                    .diskWrittenToday = 18.4e9,
                    .networkToday = 2.3e9,
                    .network7Days = 41e9,
                    .network30Days = 164e9});
  model.peripherals.set({{"Wireless mouse", 61, PeripheralBattery::Kind::mouse},
                         {localized("Headphones"), 24, PeripheralBattery::Kind::headphones}});
  model.alerts.set({{.id = "1",
                     .kind = HealthAlert::Kind::cpu,
                     .appName = "Blender",
                     .bundlePath = {},
                     .title = localized("{app} is keeping the CPU busy", {{"app", "Blender"}}),
                     .detail = "",
                     .date = now() - Seconds{3800}},
                    {.id = "2",
                     .kind = HealthAlert::Kind::memoryPressure,
                     .appName = {},
                     .bundlePath = {},
                     .title = localized("Memory is running out"),
                     .detail = "",
                     .date = now() - Seconds{200'000}}});
  for (double ago = 300; ago >= 0; ago -= 2) model.step(snapshotAt(now() - Seconds{ago}), ago == 300);
}

} // namespace korvell
