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
  std::string id; ///< stays with the fan: "F0", "nct6775 fan2"
  std::string name;
  double rpm = 0;    ///< revolutions a minute; 0: it stands still, or its place is empty
  double minRPM = 0; ///< 0 when nothing tells it
  double maxRPM = 0; ///< 0 when nothing tells it

  bool operator==(const FanReading&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"id", &FanReading::id}, Field{"name", &FanReading::name},
                      Field{"rpm", &FanReading::rpm, Unit::revolutionsPerMinute},
                      Field{"minRPM", &FanReading::minRPM, Unit::revolutionsPerMinute},
                      Field{"maxRPM", &FanReading::maxRPM, Unit::revolutionsPerMinute}};
  }
};

/// Whose temperature a sensor tells, as far as its name says.
enum class SensorKind { cpu, gpu, soc, other };

template <>
struct EnumTable<SensorKind> {
  using enum SensorKind;
  static constexpr EnumCase<SensorKind> cases[] = {
      {cpu, "cpu", "CPU"}, {gpu, "gpu", "GPU"}, {soc, "soc", "Chip"}, {other, "other", "Other"}};
};

struct TemperatureReading {
  std::string name;
  double celsius = 0;
  SensorKind kind = SensorKind::other;
  std::optional<std::string> chip; ///< what the sensor is part of; absent where the system names none

  bool operator==(const TemperatureReading&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"name", &TemperatureReading::name},
                      Field{"celsius", &TemperatureReading::celsius, Unit::celsius},
                      Field{"kind", &TemperatureReading::kind}, Field{"chip", &TemperatureReading::chip}};
  }
};

/// Degrees Celsius are above 0 and at most 150 of what Linux and a Mac's controller tell.
struct SensorsSnapshot {
  std::optional<double> cpuCelsius;
  std::optional<double> gpuCelsius;
  std::optional<double> socCelsius;
  std::vector<FanReading> fans;
  std::vector<TemperatureReading> temperatures; ///< by kind, then by name as people count

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
