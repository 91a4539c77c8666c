#pragma once
// The sources of temperatures, fans and peripherals' batteries, examined one by one.

#include "Platform/Diagnostics.h"
#include "Platform/Linux/LinuxSensorChips.h"

#include <string>
#include <vector>

namespace korvell {

/// `bus`: the system's. `clock` measures what a reading costs. As slow as the slowest chip.
std::vector<SourceReport> sensorSources(const LinuxSensorRoots& roots, const std::string& bus,
                                        const Clock& clock);

} // namespace korvell
