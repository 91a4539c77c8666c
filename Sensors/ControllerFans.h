#pragma once

#include "Sensors/SMC.h"
#include "Sensors/SensorsSnapshot.h"

#include <vector>

namespace korvell {

/// The fans that a Mac's controller looks after: how many (FNum), and of each its speed (F0Ac), the least and
/// the most (F0Mn, F0Mx) and a name (F0ID), "Fan 1" without one. A fan whose speed can't be read is left out.
std::vector<FanReading> controllerFans(SMC& smc);

} // namespace korvell
