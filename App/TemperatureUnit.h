#pragma once
// In what windows show temperatures, as the user picked it; stored in the settings under "temperatureUnit".
// Commands and everything that programs read stay with degrees Celsius.

#include "Base/Enum.h"
#include "Platform/UserDefaults.h"

#include <cmath>
#include <string>

namespace korvell {

enum class TemperatureUnit { celsius, fahrenheit };

template <>
struct EnumTable<TemperatureUnit> {
  using enum TemperatureUnit;
  static constexpr EnumCase<TemperatureUnit> cases[] = {{celsius, "celsius", "°C"},
                                                        {fahrenheit, "fahrenheit", "°F"}};
};

inline constexpr std::string_view temperatureUnitKey = "temperatureUnit";

/// A missing or unknown value means degrees Celsius.
inline TemperatureUnit temperatureUnit(const UserDefaults& defaults) {
  const auto stored = defaults.string(temperatureUnitKey);
  return stored ? fromRawValue<TemperatureUnit>(*stored).value_or(TemperatureUnit::celsius)
                : TemperatureUnit::celsius;
}

/// Rounded: "54°C", "129°F".
inline std::string temperatureText(double celsius, TemperatureUnit unit) {
  const bool isFahrenheit = unit == TemperatureUnit::fahrenheit;
  const double degrees = isFahrenheit ? celsius * 9 / 5 + 32 : celsius;
  return std::to_string(std::lround(degrees)).append(currentLanguage().numbers.beforePercent) + title(unit);
}

} // namespace korvell
