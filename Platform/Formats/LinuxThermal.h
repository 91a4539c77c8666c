#pragma once
// The four thermal states made of what Linux tells: thermal zones with their trip points, what cools the
// processors, and how long they were slowed down. docs/health.md has the mapping for people.

#include "Base/Date.h"
#include "Platform/MachineState.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

namespace korvell {

/// A temperature at which the kernel does something. Fans that start ("active") are no trouble.
struct ThermalTrip {
  enum class Kind { passive, hot, critical };
  Kind kind = Kind::passive;
  double celsius = 0;
};

struct ThermalZoneReading {
  double celsius = 0;
  std::vector<ThermalTrip> trips;
};

/// Milliseconds since boot that each package was slowed down, keyed by the package.
using ThrottledTime = std::map<int, std::uint64_t>;

struct ThermalReading {
  std::vector<ThermalZoneReading> zones;
  bool processorsAreSlowed = false; ///< a cooling device for processors is at work
  ThrottledTime throttled;
};

/// Text of a trip_point_N_type; nothing for "active" and unknown ones.
std::optional<ThermalTrip::Kind> parseTripKind(std::string_view text);
/// Millidegrees as text. Nothing for what no sensor of a running machine says: 0 and below (switched off, or
/// not programmed) and above 150 °C.
std::optional<double> parseMillidegrees(std::string_view text);
/// Whether a cooling device of this type makes processors slower.
bool slowsProcessors(std::string_view coolingDeviceType);

/// `before` and `since` are the throttled times of the reading before and the time between the two; without
/// them the times say nothing.
ThermalState thermalState(const ThermalReading& reading, const ThrottledTime& before = {},
                          Seconds since = Seconds(0));

} // namespace korvell
