#pragma once
// What macOS counts, turned into this house's records: page counts of the virtual-memory statistics and the
// property dictionaries that drivers publish in the I/O registry, already converted to plain values.

#include "Base/Value.h"
#include "Platform/MachineCounters.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace korvell {

/// Pages as host_statistics64 counts them.
struct MacPageCounts {
  std::uint64_t internal = 0; ///< anonymous
  std::uint64_t external = 0; ///< backed by files
  std::uint64_t purgeable = 0;
  std::uint64_t wired = 0;
  std::uint64_t compressor = 0; ///< that the compressor occupies
};

/// A whole number from 0 on that an int holds.
std::optional<int> macCount(const Value* number);

/// Only the figures that the pages tell; `swapUsed` and `pressure` are left.
MemoryUse macMemory(const MacPageCounts& pages, std::uint64_t pageSize);

/// Of the sysctl "kern.memorystatus_vm_pressure_level"; unknown levels are normal.
PressureLevel macPressure(std::optional<int> level);

// The properties that each function reads; only these need converting.
inline constexpr std::string_view macDiskProperties[] = {"Statistics"};
inline constexpr std::string_view macGPUProperties[] = {"PerformanceStatistics"};
inline constexpr std::string_view macBatteryProperties[] = {
    "AppleRawMaxCapacity", "BatteryData",       "BatteryInstalled", "CycleCount",
    "DesignCapacity",      "ExternalConnected", "IsCharging",       "InstantAmperage",
    "PowerTelemetryData",  "Temperature",       "TimeRemaining",    "Voltage"};

/// Of one "IOBlockStorageDriver"; nothing without both counters.
std::optional<ByteCounters> macDiskCounters(const Value& properties);
/// Of one "IOAccelerator"; nothing without performance statistics.
std::optional<GPUCounters> macGPUCounters(const Value& properties);
/// Of an "AppleSmartBattery". `percent` comes from the power sources. What no battery has is absent.
BatteryReading macBattery(const Value& properties, std::optional<int> percent);

} // namespace korvell
