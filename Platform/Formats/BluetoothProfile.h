#pragma once
// What `system_profiler SPBluetoothDataType -json` says of connected devices: the only place where macOS
// tells everybody the charge of headphones.

#include "Platform/PeripheralSource.h"

#include <string_view>
#include <vector>

namespace korvell {

/// Of headphones with several batteries the lower one of the two sides; their case does not count, unless it
/// is all that is told. Devices without a charge are left out. Nothing for a text of another form.
std::vector<PeripheralReading> parseBluetoothProfile(std::string_view json);

} // namespace korvell
