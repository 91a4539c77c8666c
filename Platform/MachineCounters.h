#pragma once
// What the machine as a whole has counted so far. Raw counters only: shares, rates and texts are made of them
// by Core/Machine/SystemSampler.
//
// A reading that fails is absent or empty, and is tried again at the next call. One thread at a time (the
// sampler's queue); nothing here starts a program. volumes() may take milliseconds, the rest microseconds.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// One logical processor's ticks since boot, in a unit that is the same for the four.
struct CoreTicks {
  std::uint64_t user = 0;
  std::uint64_t system = 0;
  std::uint64_t idle = 0;
  std::uint64_t nice = 0;
  bool operator==(const CoreTicks&) const = default;
};

/// How far a core's counter went from one reading to the next. Its width belongs to the reading.
enum class TickWidth {
  wraps32,   ///< unsigned 32-bit counters that wrap (macOS)
  monotonic, ///< 64-bit counters; one that steps back did not advance (Linux: iowait may)
};

struct CPUCounters {
  std::optional<double> load1; ///< load average over one minute
  /// Keyed by the kernel's number of the core, so that a core that goes offline leaves a gap. Empty when the
  /// counters could not be read.
  std::map<int, CoreTicks> cores;
  TickWidth width = TickWidth::monotonic;
  bool operator==(const CPUCounters&) const = default;
};

enum class PressureLevel { normal, warning, critical };

/// Bytes. On Linux: app = AnonPages + Shmem; cached = Cached − Shmem + Buffers + SReclaimable and what the
/// cache of ZFS gives back; compressed = Zswap and what zram devices use; wired = the rest but MemFree and
/// free huge pages, so that the parts add up to the total, which they
/// never exceed. On macOS: page counts × page size.
struct MemoryUse {
  std::uint64_t app = 0;
  std::uint64_t wired = 0;
  std::uint64_t compressed = 0;
  std::uint64_t cached = 0;
  std::uint64_t swapUsed = 0;
  PressureLevel pressure = PressureLevel::normal; ///< as the system judges it; normal when it does not say
  bool operator==(const MemoryUse&) const = default;
};

struct MemoryCounters {
  std::uint64_t total = 0;      ///< physical memory in bytes; 0 when unknown
  std::optional<MemoryUse> use; ///< absent when the statistics could not be read
  bool operator==(const MemoryCounters&) const = default;
};

/// Bytes since the device appeared.
struct ByteCounters {
  std::uint64_t in = 0;  ///< read from a disk, received from a network
  std::uint64_t out = 0; ///< written, sent
  bool operator==(const ByteCounters&) const = default;
};

struct Volume {
  std::string name;           ///< display name; empty when it has none
  std::string mountPoint;     ///< absolute path
  std::int64_t total = 0;     ///< bytes
  std::int64_t available = 0; ///< bytes available to the user
  bool operator==(const Volume&) const = default;
};

struct InterfaceCounters {
  std::string name;        ///< the system's name, "en0", "wlp3s0"
  std::string displayName; ///< "Wi-Fi"; empty when the system knows none
  ByteCounters bytes;
  bool operator==(const InterfaceCounters&) const = default;
};

/// One graphics processor.
struct GPUCounters {
  std::optional<double> utilization;        ///< percent, 0 to 100
  std::optional<std::uint64_t> memoryInUse; ///< bytes
  /// Of drivers that count instead of telling a share: nanoseconds in which each engine worked, keyed by
  /// names that no other card has. `utilization` is absent then.
  std::map<std::string, std::uint64_t> engineTime;
  bool operator==(const GPUCounters&) const = default;
};

/// What no portable machine draws, drivers say for "unknown".
constexpr bool isBatteryPower(double watts) { return watts >= 0 && watts <= 500; }

struct BatteryReading {
  bool present = false;
  std::optional<int> percent; ///< 0 to 100
  bool isCharging = false;
  std::optional<bool> externalConnected; ///< absent when the system does not say
  std::optional<int> cycles;
  double fullCapacity = 0; ///< in the unit of designCapacity; 0 when unknown
  double designCapacity = 0;
  std::optional<double> celsius;
  std::optional<int> minutesRemaining; ///< as the system tells it, on power and off
  std::optional<double> systemWatts;   ///< what the whole machine draws
  bool operator==(const BatteryReading&) const = default;
};

/// Energy that one processor package has used, a counter that starts again at 0 after `wrapsAt`.
struct EnergyCounter {
  std::uint64_t microjoules = 0;
  std::uint64_t wrapsAt = 0; ///< microjoules; 0 when unknown
  bool operator==(const EnergyCounter&) const = default;
};

struct PowerReading {
  std::optional<BatteryReading> battery; ///< absent on a machine without a battery
  /// What the machine may draw from its adapter (its rating), asked only without a battery.
  std::optional<double> adapterWatts;
  /// Keyed by package; empty where the counters do not exist or only the system may read them.
  std::map<int, EnergyCounter> packages;
  bool packagesRefused = false; ///< the counters exist and this user may not read them
  bool operator==(const PowerReading&) const = default;
};

/// What does not change while the machine runs.
struct MachineFacts {
  std::string chipName;     ///< the processor's name; empty when unknown
  std::string graphicsName; ///< the chip's where it draws too, else the cards'; empty when unknown
  int performanceCores = 0; ///< 0 when all cores are alike or unknown
  int efficiencyCores = 0;
  int logicalProcessors = 1; ///< at least 1
  bool operator==(const MachineFacts&) const = default;
};

class MachineCounters {
public:
  virtual ~MachineCounters() = default;

  virtual MachineFacts facts() = 0;
  virtual CPUCounters cpu() = 0;
  virtual MemoryCounters memory() = 0;
  /// Whole disks only, each byte once, keyed by an identity that no other device takes over.
  virtual std::map<std::uint64_t, ByteCounters> disks() = 0;
  /// Volumes worth showing, the start-up volume first.
  virtual std::vector<Volume> volumes() = 0;
  /// Wired, wireless and cellular links, in the system's order.
  virtual std::vector<InterfaceCounters> interfaces() = 0;
  /// Empty when none can be read.
  virtual std::vector<GPUCounters> gpus() = 0;
  virtual PowerReading power() = 0;
};

} // namespace korvell
