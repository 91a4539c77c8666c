#pragma once
// How sensors and fans are called, and which of their figures are believed.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// A driver's or a device's text made fit to be shown: UTF-8 without control characters, blanks at its ends
/// or anything behind a NUL; at most as long as a line can show.
std::string sensorText(std::string_view bytes);
/// "Fan 1".
std::string numberedFan(int number);

/// From 0 on and below what drivers say for "unknown" (65,535).
constexpr bool isFanSpeed(double rpm) { return rpm >= 0 && rpm < 50'000; }
/// 0 for a limit that is not told or can't be one.
constexpr double fanLimit(std::optional<double> rpm) { return rpm && isFanSpeed(*rpm) ? *rpm : 0; }

} // namespace korvell
