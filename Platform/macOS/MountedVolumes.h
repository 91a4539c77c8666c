#pragma once
// The volumes that the file manager lists.

#include "Platform/MachineCounters.h"

#include <vector>

namespace korvell {

/// Browsable volumes with a capacity, in the file manager's order; hidden ones are skipped.
std::vector<Volume> mountedVolumes();

} // namespace korvell
