#pragma once
// What the sensors reader and the reader of peripheral batteries found.

#include "Base/Enum.h"
#include "Base/Hash.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

struct FanReading {
  std::string id;
  std::string name;
  double rpm = 0;
  double minRPM = 0;
  double maxRPM = 0;

  bool operator==(const FanReading&) const = default;
  auto fields() const { return std::tie(id, name, rpm, minRPM, maxRPM); }
};

struct TemperatureReading {
  std::string name;
  double celsius = 0;

  bool operator==(const TemperatureReading&) const = default;
  auto fields() const { return std::tie(name, celsius); }
};

struct SensorsSnapshot {
  std::optional<double> cpuCelsius;
  std::optional<double> gpuCelsius;
  std::optional<double> socCelsius;
  std::vector<FanReading> fans;
  std::vector<TemperatureReading> temperatures;

  bool operator==(const SensorsSnapshot&) const = default;
  auto fields() const { return std::tie(cpuCelsius, gpuCelsius, socCelsius, fans, temperatures); }
};

struct PeripheralBattery {
  enum class Kind { mouse, keyboard, trackpad, headphones, other };

  std::string name;
  int percent = 0;
  Kind kind = Kind::other;

  bool operator==(const PeripheralBattery&) const = default;
  auto fields() const { return std::tie(name, percent, kind); }
};

template <>
struct EnumTable<PeripheralBattery::Kind> {
  using enum PeripheralBattery::Kind;
  static constexpr EnumCase<PeripheralBattery::Kind> cases[] = {{mouse, "mouse", "Mouse"},
                                                                {keyboard, "keyboard", "Keyboard"},
                                                                {trackpad, "trackpad", "Trackpad"},
                                                                {headphones, "headphones", "Headphones"},
                                                                {other, "other", "Other"}};
};

} // namespace korvell
