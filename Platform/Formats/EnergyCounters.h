#pragma once
// Energy counters of processor packages, which start again from time to time.

#include "Platform/MachineCounters.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace korvell {

/// Microjoules that all packages of both readings used together. A counter that stepped back went past its
/// end; one whose end is unknown counts for nothing then.
std::uint64_t microjoulesBetween(const std::map<int, EnergyCounter>& previous,
                                 const std::map<int, EnergyCounter>& now);

/// Energy shared out by CPU time: what each part gets, in the unit of `energy`. Nothing to anybody when
/// nobody used any. What rounding leaves over is nobody's.
std::vector<std::uint64_t> energyShares(std::uint64_t energy, std::span<const std::uint64_t> cpuTimes);

} // namespace korvell
