#include "Platform/Formats/MacCounters.h"

#include "Platform/TemperatureSources.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvell {

MemoryUse macMemory(const MacPageCounts& pages, std::uint64_t pageSize) {
  MemoryUse memory;
  memory.app = pages.internal > pages.purgeable ? (pages.internal - pages.purgeable) * pageSize : 0;
  memory.wired = pages.wired * pageSize;
  memory.compressed = pages.compressor * pageSize;
  memory.cached = (pages.external + pages.purgeable) * pageSize;
  return memory;
}

PressureLevel macPressure(std::optional<int> level) {
  switch (level.value_or(0)) {
  case 4:
    return PressureLevel::critical;
  case 2:
    return PressureLevel::warning;
  default:
    return PressureLevel::normal;
  }
}

namespace {

/// A whole number. Negative ones may stand there as the 64-bit two's complement of an unsigned number.
std::optional<std::int64_t> whole(const Value* v) {
  if (!v) return std::nullopt;
  if (const auto number = v->asInt()) return number;
  if (const auto number = v->asUnsigned()) return std::int64_t(*number);
  return std::nullopt;
}

std::int64_t wholeOrZero(const Value& properties, std::string_view key) {
  return whole(properties.find(key)).value_or(0);
}

std::optional<std::uint64_t> counter(const Value& properties, std::string_view key) {
  const auto* number = properties.find(key);
  return number ? number->asUnsigned() : std::nullopt;
}

std::optional<bool> flag(const Value& properties, std::string_view key) {
  const auto* v = properties.find(key);
  return v ? v->asBool() : std::nullopt;
}

std::int64_t nestedWhole(const Value& properties, std::string_view dictionary, std::string_view key) {
  const auto* inner = properties.find(dictionary);
  return inner ? wholeOrZero(*inner, key) : 0;
}

/// What comes in through the adapter when on power, else what the machine reports as its load, else what the
/// battery gives or takes. The first is only trusted on power: on battery it may hold a stale value.
std::optional<double> toldWatts(const Value& properties, bool onPower) {
  const auto powerIn = nestedWhole(properties, "PowerTelemetryData", "SystemPowerIn");
  if (onPower && powerIn > 0) return double(powerIn) / 1000;
  const auto load = nestedWhole(properties, "PowerTelemetryData", "SystemLoad");
  if (load > 0) return double(load) / 1000;
  const auto millivolts = whole(properties.find("Voltage"));
  const auto milliamperes = whole(properties.find("InstantAmperage"));
  if (!millivolts || !milliamperes) return std::nullopt;
  return std::abs(double(*millivolts) / 1000 * double(*milliamperes) / 1000);
}

std::optional<double> systemWatts(const Value& properties, bool onPower) {
  const auto watts = toldWatts(properties, onPower);
  return watts && isBatteryPower(*watts) ? watts : std::nullopt;
}

double capacity(std::optional<std::int64_t> told) {
  return double(std::max(told.value_or(0), std::int64_t{0}));
}

} // namespace

std::optional<int> macCount(const Value* number) {
  const auto count = whole(number);
  const bool fits = count && *count >= 0 && *count <= std::numeric_limits<int>::max();
  return fits ? std::optional(int(*count)) : std::nullopt;
}

std::optional<ByteCounters> macDiskCounters(const Value& properties) {
  const auto* statistics = properties.find("Statistics");
  if (!statistics) return std::nullopt;
  const auto read = counter(*statistics, "Bytes (Read)");
  const auto written = counter(*statistics, "Bytes (Write)");
  if (!read || !written) return std::nullopt;
  return ByteCounters{.in = *read, .out = *written};
}

std::optional<GPUCounters> macGPUCounters(const Value& properties) {
  const auto* statistics = properties.find("PerformanceStatistics");
  if (!statistics || !statistics->asObject()) return std::nullopt;
  GPUCounters gpu;
  const auto* utilization = statistics->find("Device Utilization %");
  if (const auto percent = utilization ? utilization->asDouble() : std::nullopt; percent && *percent >= 0)
    gpu.utilization = std::min(*percent, 100.0);
  gpu.memoryInUse = counter(*statistics, "In use system memory");
  return gpu;
}

BatteryReading macBattery(const Value& properties, std::optional<int> percent) {
  BatteryReading battery;
  battery.present = flag(properties, "BatteryInstalled").value_or(false);
  if (percent && *percent >= 0) battery.percent = std::min(*percent, 100);
  battery.isCharging = flag(properties, "IsCharging").value_or(false);
  battery.externalConnected = flag(properties, "ExternalConnected");
  battery.cycles = macCount(properties.find("CycleCount"));
  battery.fullCapacity = capacity(whole(properties.find("AppleRawMaxCapacity")));
  const auto* data = properties.find("BatteryData");
  const auto design = data ? whole(data->find("DesignCapacity")) : std::nullopt;
  battery.designCapacity = capacity(design ? design : whole(properties.find("DesignCapacity")));
  const auto hundredths = whole(properties.find("Temperature"));
  if (hundredths && isTemperature(double(*hundredths) / 100)) battery.celsius = double(*hundredths) / 100;
  battery.minutesRemaining = macCount(properties.find("TimeRemaining"));
  battery.systemWatts = systemWatts(properties, battery.externalConnected.value_or(true));
  return battery;
}

} // namespace korvell
