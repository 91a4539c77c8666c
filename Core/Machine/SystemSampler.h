#pragma once
// Makes the whole-machine figures of a snapshot out of the machine's counters.
//
// Lives on the sampler's queue and holds the previous cycle's counters: shares and rates are what advanced
// since then. Time passes by the monotonic clock, so a wall clock that is set changes no rate. The first
// cycle reports zero shares and rates. A reading that fails makes its own figures zero, is tried again next
// time, and is told apart from a zero by known().

#include "Core/Machine/Models.h"
#include "Platform/KnownParts.h"
#include "Platform/MachineCounters.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class SystemSampler {
public:
  /// Volumes are asked for at most this often: they are the slowest reading.
  static constexpr Seconds volumesAge{30};

  SystemSampler(MachineCounters& counters, const Clock& clock);

  /// Fills everything but `date` and `apps`.
  void sample(SystemSnapshot& into);
  /// Which of the figures of the last cycle were read.
  const KnownParts& known() const { return known_; }

private:
  const std::vector<VolumeInfo>& volumes(Seconds now);

  MachineCounters& counters_;
  const Clock& clock_;
  const MachineFacts facts_;
  std::optional<Seconds> lastSample_;
  CPUCounters previousCPU_;
  std::map<std::uint64_t, ByteCounters> previousDisks_;
  std::map<std::string, ByteCounters> previousInterfaces_;
  std::map<std::string, std::uint64_t> previousEngines_;
  std::map<int, EnergyCounter> previousPackages_;
  std::vector<VolumeInfo> cachedVolumes_;
  std::optional<Seconds> volumesRead_;
  KnownParts known_;
};

// The rules, one for each record. `elapsed` is the time since `previous` was read; zero gives zero rates.

CPUStats cpuStats(const CPUCounters& previous, const CPUCounters& now, const MachineFacts& facts);
MemoryStats memoryStats(const MemoryCounters& now);
/// Bytes a second of devices that both readings know. `volumes` is left empty.
DiskStats diskStats(const std::map<std::uint64_t, ByteCounters>& previous,
                    const std::map<std::uint64_t, ByteCounters>& now, Seconds elapsed);
NetworkStats networkStats(const std::map<std::string, ByteCounters>& previous,
                          const std::vector<InterfaceCounters>& now, Seconds elapsed);
/// The busiest card's or engine's utilisation and the memory of all. `previous`: engine times by engine.
GPUStats gpuStats(const std::map<std::string, std::uint64_t>& previous, const std::vector<GPUCounters>& now,
                  const MachineFacts& facts, Seconds elapsed);
/// Watts that the processor packages drew together.
double packageWatts(const std::map<int, EnergyCounter>& previous, const std::map<int, EnergyCounter>& now,
                    Seconds elapsed);
/// `packageWatts` stands in for a draw that neither the battery nor the adapter tells.
BatteryStats batteryStats(const PowerReading& now, double packageWatts);
/// Those with a capacity; a volume without a name is called like the last component of its mount point.
std::vector<VolumeInfo> volumeInfos(const std::vector<Volume>& now);

} // namespace korvell
