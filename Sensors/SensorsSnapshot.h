#pragma once
// What the sensors reader and the reader of peripheral batteries found.

#include "Base/Enum.h"
#include "Base/Record.h"

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
  static constexpr auto fields() {
    return std::tuple{Field{"id", &FanReading::id}, Field{"name", &FanReading::name},
                      Field{"rpm", &FanReading::rpm, Unit::revolutionsPerMinute},
                      Field{"minRPM", &FanReading::minRPM, Unit::revolutionsPerMinute},
                      Field{"maxRPM", &FanReading::maxRPM, Unit::revolutionsPerMinute}};
  }
};

struct TemperatureReading {
  std::string name;
  double celsius = 0;

  bool operator==(const TemperatureReading&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &TemperatureReading::name},
                      Field{"celsius", &TemperatureReading::celsius, Unit::celsius}};
  }
};

struct SensorsSnapshot {
  std::optional<double> cpuCelsius;
  std::optional<double> gpuCelsius;
  std::optional<double> socCelsius;
  std::vector<FanReading> fans;
  std::vector<TemperatureReading> temperatures;

  bool operator==(const SensorsSnapshot&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"cpuCelsius", &SensorsSnapshot::cpuCelsius, Unit::celsius},
                      Field{"gpuCelsius", &SensorsSnapshot::gpuCelsius, Unit::celsius},
                      Field{"socCelsius", &SensorsSnapshot::socCelsius, Unit::celsius},
                      Field{"fans", &SensorsSnapshot::fans},
                      Field{"temperatures", &SensorsSnapshot::temperatures}};
  }
};

struct PeripheralBattery {
  enum class Kind { mouse, keyboard, trackpad, headphones, other };

  std::string name;
  int percent = 0;
  Kind kind = Kind::other;

  bool operator==(const PeripheralBattery&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &PeripheralBattery::name},
                      Field{"percent", &PeripheralBattery::percent, Unit::percent},
                      Field{"kind", &PeripheralBattery::kind}};
  }
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
