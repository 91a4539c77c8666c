#include "Platform/macOS/MacPeripherals.h"

#include "Platform/Formats/BluetoothProfile.h"
#include "Platform/macOS/IORegistry.h"

#include <array>
#include <utility>

namespace korvell {

namespace {

constexpr Seconds profilePatience{10};

/// Both are asked: some devices tell it in the one, some in the other.
constexpr const char* deviceClasses[] = {"AppleDeviceManagementHIDEventService", "IOHIDDevice"};
constexpr std::array<std::string_view, 4> properties{"BatteryPercent", "Product", "DeviceAddress",
                                                     "SerialNumber"};

std::string textOf(const Value& entry, std::string_view name) {
  const auto* member = entry.find(name);
  return member && member->asString() ? *member->asString() : std::string();
}

} // namespace

std::vector<PeripheralReading> registryPeripherals() {
  std::vector<PeripheralReading> readings;
  for (const auto* name : deviceClasses)
    for (const auto& entry : registryEntries(name)) {
      const auto told = registryProperties(entry, properties);
      const auto* battery = told.find("BatteryPercent");
      const auto percent = battery ? battery->asInt() : std::nullopt;
      if (!percent) continue;
      auto address = textOf(told, "DeviceAddress");
      if (address.empty()) address = textOf(told, "SerialNumber");
      readings.push_back(
          {.name = textOf(told, "Product"), .percent = double(*percent), .address = std::move(address)});
    }
  return readings;
}

std::vector<PeripheralReading> profiledPeripherals(const CommandRunner& run) {
  const auto result = run("/usr/sbin/system_profiler", {"SPBluetoothDataType", "-json"}, profilePatience, {});
  return result ? parseBluetoothProfile(result->output) : std::vector<PeripheralReading>();
}

std::vector<PeripheralReading> MacPeripherals::read() {
  auto readings = registryPeripherals();
  bool asks = false;
  {
    const std::lock_guard lock(mutex_);
    readings.insert(readings.end(), profiled_.begin(), profiled_.end());
    asks = !std::exchange(isUnderWay_, true);
  }
  if (!asks) return readings;
  if (!queue_) queue_ = makeQueue_("Korvell.peripherals");
  queue_->async([this] {
    auto profiled = profiledPeripherals(run_);
    const std::lock_guard lock(mutex_);
    profiled_ = std::move(profiled);
    isUnderWay_ = false;
  });
  return readings;
}

} // namespace korvell
