#include "Platform/Formats/LinuxThermal.h"

#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

/// Degrees below a trip point from which on a state holds.
struct Margin {
  ThermalTrip::Kind kind;
  double degrees;
  ThermalState state;
};
constexpr Margin margins[] = {
    {ThermalTrip::Kind::critical, 15, ThermalState::fair},
    {ThermalTrip::Kind::critical, 5, ThermalState::critical},
    {ThermalTrip::Kind::hot, 5, ThermalState::critical},
    {ThermalTrip::Kind::passive, 10, ThermalState::fair},
    {ThermalTrip::Kind::passive, 0, ThermalState::serious},
};
constexpr double throttledShare = 0.05;

struct NamedTrip {
  std::string_view name;
  ThermalTrip::Kind kind;
};
constexpr NamedTrip tripKinds[] = {{"passive", ThermalTrip::Kind::passive},
                                   {"hot", ThermalTrip::Kind::hot},
                                   {"critical", ThermalTrip::Kind::critical}};

bool wasThrottled(const ThrottledTime& now, const ThrottledTime& before, Seconds since) {
  if (since <= Seconds(0)) return false;
  return std::ranges::any_of(now, [&](const auto& package) {
    const auto last = before.find(package.first);
    return last != before.end() && package.second > last->second &&
           double(package.second - last->second) / 1000 > throttledShare * since.count();
  });
}

} // namespace

std::optional<ThermalTrip::Kind> parseTripKind(std::string_view text) {
  for (const auto& [name, kind] : tripKinds)
    if (trimmed(text) == name) return kind;
  return std::nullopt;
}

std::optional<double> parseMillidegrees(std::string_view text) {
  const auto value = parseInteger<std::int64_t>(trimmed(text));
  if (!value || *value <= 0 || *value > 150'000) return std::nullopt;
  return double(*value) / 1000;
}

bool slowsProcessors(std::string_view type) {
  const auto name = trimmed(type);
  return name == "Processor" || name.starts_with("cpufreq") || name.starts_with("thermal-cpufreq");
}

ThermalState thermalState(const ThermalReading& reading, const ThrottledTime& before, Seconds since) {
  auto state = ThermalState::nominal;
  for (const auto& zone : reading.zones)
    for (const auto& trip : zone.trips)
      for (const auto& margin : margins)
        if (trip.kind == margin.kind && zone.celsius >= trip.celsius - margin.degrees)
          state = std::max(state, margin.state);
  if (reading.processorsAreSlowed || wasThrottled(reading.throttled, before, since))
    state = std::max(state, ThermalState::serious);
  return state;
}

} // namespace korvell
