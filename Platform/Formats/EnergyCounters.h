#pragma once
// Energy counters of processor packages, which start again from time to time.

#include "Platform/MachineCounters.h"

#include <cstdint>
#include <map>

namespace korvell {

/// Microjoules that all packages of both readings used together. A counter that stepped back went past its
/// end; one whose end is unknown counts for nothing then.
std::uint64_t microjoulesBetween(const std::map<int, EnergyCounter>& previous,
                                 const std::map<int, EnergyCounter>& now);

} // namespace korvell
