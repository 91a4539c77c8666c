#pragma once
// The batteries of peripherals as people see them: no device twice, readable names, nothing that is gone.

#include "Platform/PeripheralSource.h"
#include "Sensors/SensorsSnapshot.h"

#include <vector>

namespace korvell {

/// Of several entries for one device (the same address, or the same battery) the first counts; what it leaves
/// open (its name, its kind) comes from the others. Left out: what is not present, and what tells no charge
/// from 0 to 100 percent. In the order of kinds, then names as people count.
std::vector<PeripheralBattery> peripheralBatteries(const std::vector<PeripheralReading>& readings);

} // namespace korvell
