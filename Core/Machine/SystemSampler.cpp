#include "Core/Machine/SystemSampler.h"

#include "Base/Localization.h"
#include "Platform/Formats/EnergyCounters.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

std::uint64_t advance(std::uint64_t previous, std::uint64_t now) {
  return now > previous ? now - previous : 0;
}

std::uint64_t tickAdvance(std::uint64_t previous, std::uint64_t now, TickWidth width) {
  if (width == TickWidth::wraps32) return std::uint32_t(std::uint32_t(now) - std::uint32_t(previous));
  return advance(previous, now);
}

double percent(std::uint64_t part, std::uint64_t all) { return all ? double(part) / double(all) * 100 : 0; }

bool sameCores(const CPUCounters& a, const CPUCounters& b) {
  return std::ranges::equal(
      a.cores, b.cores, {}, [](const auto& core) { return core.first; },
      [](const auto& core) { return core.first; });
}

/// What all devices of both readings moved together.
template <class Key>
ByteCounters sumOfAdvances(const std::map<Key, ByteCounters>& previous,
                           const std::map<Key, ByteCounters>& now) {
  ByteCounters sum;
  for (const auto& [key, bytes] : now) {
    const auto before = previous.find(key);
    if (before == previous.end()) continue;
    sum.in += advance(before->second.in, bytes.in);
    sum.out += advance(before->second.out, bytes.out);
  }
  return sum;
}

double perSecond(std::uint64_t amount, Seconds elapsed) {
  return elapsed.count() > 0 ? double(amount) / elapsed.count() : 0;
}

std::map<std::string, ByteCounters> byName(const std::vector<InterfaceCounters>& interfaces) {
  std::map<std::string, ByteCounters> result;
  for (const auto& interface : interfaces) result[interface.name] = interface.bytes;
  return result;
}

/// What people call the volume that is mounted there.
std::string nameOfMount(const std::string& path) {
  const auto end = path.find_last_not_of('/');
  if (end == std::string::npos) return localized("System disk");
  const auto slash = path.find_last_of('/', end);
  const auto begin = slash == std::string::npos ? 0 : slash + 1;
  return path.substr(begin, end + 1 - begin);
}

MemoryStats::Pressure pressureOf(PressureLevel level) {
  switch (level) {
  case PressureLevel::warning:
    return MemoryStats::Pressure::warning;
  case PressureLevel::critical:
    return MemoryStats::Pressure::critical;
  case PressureLevel::normal:
    break;
  }
  return MemoryStats::Pressure::normal;
}

} // namespace

CPUStats cpuStats(const CPUCounters& previous, const CPUCounters& now, const MachineFacts& facts) {
  CPUStats stats;
  stats.load1 = now.load1.value_or(0);
  stats.performanceCores = facts.performanceCores;
  stats.efficiencyCores = facts.efficiencyCores;
  if (!sameCores(previous, now)) return stats;

  std::uint64_t user = 0, system = 0, all = 0;
  stats.perCore.reserve(now.cores.size());
  for (auto before = previous.cores.begin(); const auto& [number, ticks] : now.cores) {
    const CoreTicks& old = (before++)->second;
    const auto coreUser =
        tickAdvance(old.user, ticks.user, now.width) + tickAdvance(old.nice, ticks.nice, now.width);
    const auto coreSystem = tickAdvance(old.system, ticks.system, now.width);
    const auto coreAll = coreUser + coreSystem + tickAdvance(old.idle, ticks.idle, now.width);
    stats.perCore.push_back(percent(coreUser + coreSystem, coreAll));
    user += coreUser;
    system += coreSystem;
    all += coreAll;
  }
  stats.user = percent(user, all);
  stats.system = percent(system, all);
  stats.total = stats.user + stats.system;
  return stats;
}

MemoryStats memoryStats(const MemoryCounters& now) {
  MemoryStats stats;
  stats.total = now.total;
  if (!now.use) return stats;
  stats.app = now.use->app;
  stats.wired = now.use->wired;
  stats.compressed = now.use->compressed;
  stats.cached = now.use->cached;
  const auto taken = stats.app + stats.wired + stats.compressed + stats.cached;
  stats.free = taken < stats.total ? stats.total - taken : 0;
  stats.swapUsed = now.use->swapUsed;
  stats.pressure = pressureOf(now.use->pressure);
  return stats;
}

DiskStats diskStats(const std::map<std::uint64_t, ByteCounters>& previous,
                    const std::map<std::uint64_t, ByteCounters>& now, Seconds elapsed) {
  const auto moved = sumOfAdvances(previous, now);
  DiskStats stats;
  stats.readRate = perSecond(moved.in, elapsed);
  stats.writeRate = perSecond(moved.out, elapsed);
  return stats;
}

NetworkStats networkStats(const std::map<std::string, ByteCounters>& previous,
                          const std::vector<InterfaceCounters>& now, Seconds elapsed) {
  NetworkStats stats;
  const InterfaceCounters* primary = nullptr;
  for (const auto& interface : now) {
    stats.totalIn += interface.bytes.in;
    stats.totalOut += interface.bytes.out;
    // Of two that moved as much, the first one met stays.
    if (!primary || interface.bytes.in + interface.bytes.out > primary->bytes.in + primary->bytes.out)
      primary = &interface;
  }
  const auto moved = sumOfAdvances(previous, byName(now));
  stats.inRate = perSecond(moved.in, elapsed);
  stats.outRate = perSecond(moved.out, elapsed);
  if (primary)
    stats.interface =
        primary->displayName.empty() ? primary->name : primary->displayName + " · " + primary->name;
  return stats;
}

GPUStats gpuStats(const std::map<std::string, std::uint64_t>& previous, const std::vector<GPUCounters>& now,
                  const MachineFacts& facts, Seconds elapsed) {
  GPUStats stats;
  if (!facts.graphicsName.empty()) stats.name = facts.graphicsName;
  for (const auto& gpu : now) {
    stats.utilization = std::max(stats.utilization, gpu.utilization.value_or(0));
    stats.memoryInUse += gpu.memoryInUse.value_or(0);
    for (const auto& [engine, time] : gpu.engineTime) {
      const auto before = previous.find(engine);
      if (before == previous.end()) continue;
      const double share = perSecond(advance(before->second, time), elapsed) / 1e9;
      stats.utilization = std::max(stats.utilization, std::min(share * 100, 100.0));
    }
  }
  return stats;
}

double packageWatts(const std::map<int, EnergyCounter>& previous, const std::map<int, EnergyCounter>& now,
                    Seconds elapsed) {
  return perSecond(microjoulesBetween(previous, now), elapsed) / 1e6;
}

BatteryStats batteryStats(const PowerReading& now, double packageWatts) {
  BatteryStats stats;
  if (!now.battery) {
    stats.systemPower = now.adapterWatts.value_or(packageWatts);
    return stats;
  }
  const BatteryReading& battery = *now.battery;
  stats.present = battery.present;
  stats.percent = std::clamp(battery.percent.value_or(0), 0, 100);
  stats.isCharging = battery.isCharging;
  stats.onAC = battery.externalConnected.value_or(true); // an unknown state never shows as running on battery
  stats.cycles = battery.cycles.value_or(0);
  if (battery.designCapacity > 0 && battery.fullCapacity > 0)
    stats.health = std::min(battery.fullCapacity / battery.designCapacity * 100, 100.0);
  stats.temperature = battery.celsius.value_or(0);
  const int minutes = battery.minutesRemaining.value_or(0); // 65535 is a battery's word for unknown
  if (!stats.onAC && minutes >= 1 && minutes <= 65534) stats.minutesRemaining = minutes;
  stats.systemPower = battery.systemWatts.value_or(packageWatts);
  return stats;
}

std::vector<VolumeInfo> volumeInfos(const std::vector<Volume>& now) {
  std::vector<VolumeInfo> infos;
  for (const auto& volume : now) {
    if (volume.total <= 0) continue;
    infos.push_back({volume.name.empty() ? nameOfMount(volume.mountPoint) : volume.name, volume.mountPoint,
                     volume.total, volume.available});
  }
  return infos;
}

namespace {

using enum KnownPart;

/// A rate needs the same counter in two readings.
template <class Key, class Counter>
bool sharesKey(const std::map<Key, Counter>& previous, const std::map<Key, Counter>& now) {
  return std::ranges::any_of(now, [&](const auto& entry) { return previous.contains(entry.first); });
}

void judgeGraphics(KnownParts& known, const std::map<std::string, std::uint64_t>& previousEngines,
                   const std::vector<GPUCounters>& gpus, bool hasRates) {
  bool utilization = false, memory = false;
  for (const auto& gpu : gpus) {
    utilization |= gpu.utilization || (hasRates && sharesKey(previousEngines, gpu.engineTime));
    memory |= gpu.memoryInUse.has_value();
  }
  known.set(graphics, utilization);
  known.set(graphicsMemory, memory);
}

void judgePower(KnownParts& known, const PowerReading& reading, bool hasPackageWatts) {
  const auto& pack = reading.battery;
  known.set(battery, pack && pack->percent);
  known.set(batteryHealth, pack && pack->fullCapacity > 0 && pack->designCapacity > 0);
  known.set(batteryCycles, pack && pack->cycles);
  known.set(batteryTemperature, pack && pack->celsius);
  known.set(power,
            hasPackageWatts || (pack ? pack->systemWatts.has_value() : reading.adapterWatts.has_value()));
  if (!reading.packagesRefused) return;
  if (!known.has(power)) known.set(power, Knowledge::refused);
  known.set(processEnergy, Knowledge::refused);
}

} // namespace

SystemSampler::SystemSampler(MachineCounters& counters, const Clock& clock)
    : counters_(counters), clock_(clock), facts_(counters.facts()) {}

void SystemSampler::sample(SystemSnapshot& into) {
  const Seconds now = clock_.monotonic();
  const Seconds elapsed = lastSample_ ? now - *lastSample_ : Seconds{0};
  const bool hasRates = elapsed.count() > 0;
  lastSample_ = now;
  known_ = {};

  auto cpu = counters_.cpu();
  known_.set(processor, !cpu.cores.empty() && sameCores(previousCPU_, cpu));
  known_.set(load, cpu.load1.has_value());
  into.cpu = cpuStats(previousCPU_, cpu, facts_);
  previousCPU_ = std::move(cpu);

  const auto memory = counters_.memory();
  into.memory = memoryStats(memory);
  known_.set(KnownPart::memory, memory.total > 0 && memory.use);

  auto diskCounters = counters_.disks();
  into.disk = diskStats(previousDisks_, diskCounters, elapsed);
  known_.set(disks, hasRates && sharesKey(previousDisks_, diskCounters));
  into.disk.volumes = volumes(now);
  if (!cachedVolumes_.empty())
    known_.set(KnownPart::volumes, volumesRead_ == now ? Knowledge::fresh : Knowledge::old);
  previousDisks_ = std::move(diskCounters);

  const auto interfaces = counters_.interfaces();
  into.network = networkStats(previousInterfaces_, interfaces, elapsed);
  auto interfaceCounters = byName(interfaces);
  known_.set(network, hasRates && sharesKey(previousInterfaces_, interfaceCounters));
  previousInterfaces_ = std::move(interfaceCounters);

  auto gpus = counters_.gpus();
  into.gpu = gpuStats(previousEngines_, gpus, facts_, elapsed);
  judgeGraphics(known_, previousEngines_, gpus, hasRates);
  previousEngines_.clear();
  for (auto& gpu : gpus) previousEngines_.merge(gpu.engineTime);

  auto reading = counters_.power();
  into.battery = batteryStats(reading, packageWatts(previousPackages_, reading.packages, elapsed));
  judgePower(known_, reading, hasRates && sharesKey(previousPackages_, reading.packages));
  previousPackages_ = std::move(reading.packages);
}

const std::vector<VolumeInfo>& SystemSampler::volumes(Seconds now) {
  const bool fresh = !cachedVolumes_.empty() && volumesRead_ && now - *volumesRead_ <= volumesAge;
  if (!fresh) {
    cachedVolumes_ = volumeInfos(counters_.volumes());
    volumesRead_ = now;
  }
  return cachedVolumes_;
}

} // namespace korvell
