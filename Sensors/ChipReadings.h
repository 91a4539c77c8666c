#pragma once
// Readings with names, made of the chips that Linux drivers publish. A sensor bears its driver's label; where
// labels repeat, chip and label together; without one, the chip's name and a number. Chips of one driver are
// told apart by their devices, else by numbers.

#include "Platform/TemperatureSources.h"
#include "Sensors/SensorsSnapshot.h"

#include <string>
#include <vector>

namespace korvell {

/// How each chip is called: "coretemp"; "nvme nvme0" and "nvme nvme1"; "ipmi 1" and "ipmi 2".
std::vector<std::string> chipNames(const std::vector<SensorChip>& chips);
/// Those that have a value.
std::vector<TemperatureReading> chipTemperatures(const std::vector<SensorChip>& chips);
std::vector<FanReading> chipFans(const std::vector<SensorChip>& chips);

/// The whole snapshot.
SensorsSnapshot chipSnapshot(const std::vector<SensorChip>& chips);

} // namespace korvell
