#pragma once
// The sources of the whole machine's figures, examined one by one.

#include "Platform/Diagnostics.h"
#include "Platform/Linux/LinuxMachineCounters.h"

#include <vector>

namespace korvell {

/// `clock` measures what a reading costs; null leaves that out. Takes some milliseconds.
std::vector<SourceReport> machineSources(const LinuxMachineRoots& roots, const Clock* clock);

} // namespace korvell
