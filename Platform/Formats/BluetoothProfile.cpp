#include "Platform/Formats/BluetoothProfile.h"

#include "Base/Text.h"
#include "Base/Value.h"

#include <algorithm>

namespace korvell {

namespace {

std::string_view text(const Value& device, std::string_view name) {
  const auto* member = device.find(name);
  return member && member->asString() ? std::string_view(*member->asString()) : std::string_view();
}

/// "95 %", "95%" or "95".
std::optional<double> percent(const Value& device, std::string_view name) {
  auto told = text(device, name);
  if (told.ends_with('%')) told.remove_suffix(1);
  const auto number = parseInteger<int>(trimmed(told));
  return number ? std::optional(double(*number)) : std::nullopt;
}

std::optional<double> charge(const Value& device) {
  const auto left = percent(device, "device_batteryLevelLeft");
  const auto right = percent(device, "device_batteryLevelRight");
  if (left && right) return std::min(*left, *right);
  for (const auto& one : {left, right, percent(device, "device_batteryLevelMain"),
                          percent(device, "device_batteryLevel"), percent(device, "device_batteryLevelCase")})
    if (one) return one;
  return std::nullopt;
}

struct MinorType {
  std::string_view name;
  PeripheralType type;
};
constexpr MinorType minorTypes[] = {{"Mouse", PeripheralType::mouse},
                                    {"Keyboard", PeripheralType::keyboard},
                                    {"Trackpad", PeripheralType::trackpad},
                                    {"Headphones", PeripheralType::headphones},
                                    {"Headset", PeripheralType::headphones}};

PeripheralType typeOf(std::string_view name) {
  for (const auto& row : minorTypes)
    if (row.name == name) return row.type;
  return PeripheralType::unknown;
}

} // namespace

std::vector<PeripheralReading> parseBluetoothProfile(std::string_view json) {
  std::vector<PeripheralReading> readings;
  const auto whole = parseJSON(json);
  const auto* sections = whole ? whole->find("SPBluetoothDataType") : nullptr;
  if (!sections || !sections->asArray()) return readings;
  for (const auto& section : *sections->asArray()) {
    const auto* connected = section.find("device_connected");
    if (!connected || !connected->asArray()) continue;
    for (const auto& each : *connected->asArray()) {
      const auto* named = each.asObject();
      if (!named) continue;
      for (const auto& [name, device] : *named)
        if (const auto percent = charge(device))
          readings.push_back({.name = name,
                              .percent = percent,
                              .type = typeOf(text(device, "device_minorType")),
                              .address = std::string(text(device, "device_address"))});
    }
  }
  return readings;
}

} // namespace korvell
