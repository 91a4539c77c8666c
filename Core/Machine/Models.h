#pragma once
// One measurement of the machine as it travels through Korvell. Plain copyable values, compared and hashed
// field by field. Percentages run from 0 to 100 (a process may exceed 100: 100 is one core), sizes are bytes,
// rates bytes a second, power watts, temperatures degrees Celsius. A figure that could not be read is zero.

#include "Base/Date.h"
#include "Base/Enum.h"
#include "Base/Record.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct CPUStats {
  double total = 0; ///< user + system
  double user = 0;  ///< user and nice ticks
  double system = 0;
  std::vector<double> perCore; ///< in the kernel's order of the cores
  int performanceCores = 0;
  int efficiencyCores = 0;
  double load1 = 0; ///< load average over one minute

  bool operator==(const CPUStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"total", &CPUStats::total, Unit::percent},
                      Field{"user", &CPUStats::user, Unit::percent},
                      Field{"system", &CPUStats::system, Unit::percent},
                      Field{"perCore", &CPUStats::perCore, Unit::percent},
                      Field{"performanceCores", &CPUStats::performanceCores},
                      Field{"efficiencyCores", &CPUStats::efficiencyCores},
                      Field{"load1", &CPUStats::load1}};
  }
};

struct MemoryStats {
  enum class Pressure { normal, warning, critical };

  std::uint64_t total = 0;
  std::uint64_t app = 0;
  std::uint64_t wired = 0;
  std::uint64_t compressed = 0;
  std::uint64_t cached = 0;
  std::uint64_t free = 0; ///< total less the four above, never below 0
  std::uint64_t swapUsed = 0;
  Pressure pressure = Pressure::normal;

  std::uint64_t used() const { return app + wired + compressed; }
  /// In percent of the total; absent without one.
  std::optional<double> usedShare() const {
    return total > 0 ? std::optional(double(used()) / double(total) * 100) : std::nullopt;
  }

  bool operator==(const MemoryStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"total", &MemoryStats::total, Unit::memory},
                      Field{"app", &MemoryStats::app, Unit::memory},
                      Field{"wired", &MemoryStats::wired, Unit::memory},
                      Field{"compressed", &MemoryStats::compressed, Unit::memory},
                      Field{"cached", &MemoryStats::cached, Unit::memory},
                      Field{"free", &MemoryStats::free, Unit::memory},
                      Field{"swapUsed", &MemoryStats::swapUsed, Unit::memory},
                      Field{"pressure", &MemoryStats::pressure}};
  }
};

template <>
struct EnumTable<MemoryStats::Pressure> {
  using enum MemoryStats::Pressure;
  static constexpr EnumCase<MemoryStats::Pressure> cases[] = {
      {normal, "Normal", "Normal"}, {warning, "Warning", "Warning"}, {critical, "Critical", "Critical"}};
};

struct VolumeInfo {
  std::string name;
  std::string url; ///< mount point, an absolute path
  std::int64_t total = 0;
  std::int64_t available = 0; ///< for the user

  const std::string& id() const { return url; }

  bool operator==(const VolumeInfo&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &VolumeInfo::name}, Field{"url", &VolumeInfo::url},
                      Field{"total", &VolumeInfo::total, Unit::bytes},
                      Field{"available", &VolumeInfo::available, Unit::bytes}};
  }
};

struct DiskStats {
  double readRate = 0;
  double writeRate = 0;
  std::vector<VolumeInfo> volumes;

  bool operator==(const DiskStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"readRate", &DiskStats::readRate, Unit::bytesPerSecond},
                      Field{"writeRate", &DiskStats::writeRate, Unit::bytesPerSecond},
                      Field{"volumes", &DiskStats::volumes}};
  }
};

struct NetworkStats {
  double inRate = 0;
  double outRate = 0;
  std::string interface = "–"; ///< "Wi-Fi · en0"; an en dash while none is known
  std::uint64_t totalIn = 0;   ///< sums of the interfaces' running counters
  std::uint64_t totalOut = 0;

  bool operator==(const NetworkStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"inRate", &NetworkStats::inRate, Unit::bytesPerSecond},
                      Field{"outRate", &NetworkStats::outRate, Unit::bytesPerSecond},
                      Field{"interface", &NetworkStats::interface},
                      Field{"totalIn", &NetworkStats::totalIn, Unit::bytes},
                      Field{"totalOut", &NetworkStats::totalOut, Unit::bytes}};
  }
};

struct GPUStats {
  std::string name = "GPU";
  double utilization = 0;
  std::uint64_t memoryInUse = 0;

  bool operator==(const GPUStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &GPUStats::name},
                      Field{"utilization", &GPUStats::utilization, Unit::percent},
                      Field{"memoryInUse", &GPUStats::memoryInUse, Unit::memory}};
  }
};

struct BatteryStats {
  bool present = false;
  int percent = 0;
  bool isCharging = false;
  bool onAC = true; ///< true without a battery and while unknown
  int cycles = 0;
  double health = 0; ///< full charge against design capacity, at most 100
  double temperature = 0;
  std::optional<int> minutesRemaining; ///< to empty; absent on external power and while unknown
  double systemPower = 0;              ///< the whole machine's draw

  bool operator==(const BatteryStats&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"present", &BatteryStats::present},
                      Field{"percent", &BatteryStats::percent, Unit::percent},
                      Field{"isCharging", &BatteryStats::isCharging},
                      Field{"onAC", &BatteryStats::onAC},
                      Field{"cycles", &BatteryStats::cycles},
                      Field{"health", &BatteryStats::health, Unit::percent},
                      Field{"temperature", &BatteryStats::temperature, Unit::celsius},
                      Field{"minutesRemaining", &BatteryStats::minutesRemaining, Unit::minutes},
                      Field{"systemPower", &BatteryStats::systemPower, Unit::watts}};
  }
};

struct ProcessUsage {
  std::int32_t pid = 0;
  std::string name; ///< display name
  std::string path; ///< of the executable; may be empty
  double cpu = 0;   ///< percent of one core
  std::uint64_t memory = 0;
  double diskRead = 0;
  double diskWrite = 0;
  double netIn = 0;
  double netOut = 0;
  double power = 0;
  std::vector<int> ports; ///< TCP ports that it listens on, ascending

  bool operator==(const ProcessUsage&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"pid", &ProcessUsage::pid},
                      Field{"name", &ProcessUsage::name},
                      Field{"path", &ProcessUsage::path},
                      Field{"cpu", &ProcessUsage::cpu, Unit::corePercent},
                      Field{"memory", &ProcessUsage::memory, Unit::memory},
                      Field{"diskRead", &ProcessUsage::diskRead, Unit::bytesPerSecond},
                      Field{"diskWrite", &ProcessUsage::diskWrite, Unit::bytesPerSecond},
                      Field{"netIn", &ProcessUsage::netIn, Unit::bytesPerSecond},
                      Field{"netOut", &ProcessUsage::netOut, Unit::bytesPerSecond},
                      Field{"power", &ProcessUsage::power, Unit::watts},
                      Field{"ports", &ProcessUsage::ports}};
  }
};

struct AppUsage {
  std::string id; ///< grouping key, stable between samples
  std::string name;
  std::optional<std::string> bundlePath; ///< the bundle, or the desktop entry on Linux
  std::optional<std::int32_t> mainPID;   ///< the process that stands for the application
  std::vector<ProcessUsage> processes;

  // Sums over the processes.
  double cpu() const;
  std::uint64_t memory() const;
  double diskRead() const;
  double diskWrite() const;
  double netIn() const;
  double netOut() const;
  double power() const;

  bool operator==(const AppUsage&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"id", &AppUsage::id}, Field{"name", &AppUsage::name},
                      Field{"bundlePath", &AppUsage::bundlePath}, Field{"mainPID", &AppUsage::mainPID},
                      Field{"processes", &AppUsage::processes}};
  }
};

struct SystemSnapshot {
  Date date;
  CPUStats cpu;
  MemoryStats memory;
  DiskStats disk;
  NetworkStats network;
  GPUStats gpu;
  BatteryStats battery;
  std::vector<AppUsage> apps;

  /// The empty snapshot, used before the first sample.
  static SystemSnapshot empty(Date now) {
    SystemSnapshot snapshot;
    snapshot.date = now;
    return snapshot;
  }

  bool operator==(const SystemSnapshot&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &SystemSnapshot::date},       Field{"cpu", &SystemSnapshot::cpu},
                      Field{"memory", &SystemSnapshot::memory},   Field{"disk", &SystemSnapshot::disk},
                      Field{"network", &SystemSnapshot::network}, Field{"gpu", &SystemSnapshot::gpu},
                      Field{"battery", &SystemSnapshot::battery}, Field{"apps", &SystemSnapshot::apps}};
  }
};

/// The measures that have a live graph and a history, in the order of every list that shows them.
enum class Metric { cpu, memory, disk, network, gpu, energy };

template <>
struct EnumTable<Metric> {
  using enum Metric;
  static constexpr EnumCase<Metric> cases[] = {{cpu, "cpu", "CPU"},    {memory, "memory", "Memory"},
                                               {disk, "disk", "Disk"}, {network, "network", "Network"},
                                               {gpu, "gpu", "GPU"},    {energy, "energy", "Energy"}};
};

/// What the live series and the history record of a snapshot.
double metricValue(Metric metric, const SystemSnapshot& snapshot);
Unit metricUnit(Metric metric);
/// A value of that metric as people read it.
std::string formatMetric(Metric metric, double value);

/// One point of a series.
struct HistoryPoint {
  Date date;
  double value = 0;

  bool operator==(const HistoryPoint&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &HistoryPoint::date}, Field{"value", &HistoryPoint::value}};
  }
};

/// The "today", "7 days" and "30 days" figures.
struct Totals {
  double cpuToday = 0;         ///< percent, mean since local midnight
  double diskWrittenToday = 0; ///< bytes
  double networkToday = 0;     ///< bytes, both directions
  double network7Days = 0;
  double network30Days = 0;

  bool operator==(const Totals&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"cpuToday", &Totals::cpuToday, Unit::percent},
                      Field{"diskWrittenToday", &Totals::diskWrittenToday, Unit::bytes},
                      Field{"networkToday", &Totals::networkToday, Unit::bytes},
                      Field{"network7Days", &Totals::network7Days, Unit::bytes},
                      Field{"network30Days", &Totals::network30Days, Unit::bytes}};
  }
};

KORVELL_CONVERTED_ONCE(SystemSnapshot);
KORVELL_CONVERTED_ONCE(AppUsage);
KORVELL_CONVERTED_ONCE(std::vector<ProcessUsage>);
KORVELL_CONVERTED_ONCE(std::vector<HistoryPoint>);
KORVELL_CONVERTED_ONCE(Totals);

/// The sections of the main window.
enum class SidebarItem {
  overview,
  cpu,
  memory,
  disk,
  network,
  gpu,
  energy,
  storage,
  aiUsage,
  devServers,
  sound,
  sensors,
  startup,
  alerts
};

template <>
struct EnumTable<SidebarItem> {
  using enum SidebarItem;
  static constexpr EnumCase<SidebarItem> cases[] = {
      {overview, "overview", "Health"},
      {cpu, "cpu", "CPU"},
      {memory, "memory", "Memory"},
      {disk, "disk", "Disk"},
      {network, "network", "Network"},
      {gpu, "gpu", "GPU"},
      {energy, "energy", "Battery"}, // the section shows the battery's record too
      {storage, "storage", "Free Up Space"},
      {aiUsage, "aiUsage", "AI Usage"},
      {devServers, "devServers", "Dev Servers"},
      {sound, "sound", "Sound"},
      {sensors, "sensors", "Sensors"},
      {startup, "startup", "Startup Items"},
      {alerts, "alerts", "Alerts"}};
};

/// The metric that a section shows: the one of the same name.
constexpr std::optional<Metric> metric(SidebarItem item) { return fromRawValue<Metric>(rawValue(item)); }

} // namespace korvell
