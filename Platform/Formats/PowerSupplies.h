#pragma once
// Batteries and adapters as the power-supply class of Linux describes them: one "uevent" text each, with
// every property that the driver knows, in micro units.

#include "Platform/MachineCounters.h"
#include "Platform/PeripheralSource.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct PowerSupply {
  enum class Kind { battery, adapter };
  Kind kind = Kind::battery;
  bool online = false;         ///< adapters: gives power
  bool present = true;         ///< batteries: in its slot
  std::string status;          ///< "Charging", "Discharging", "Not charging", "Full", "Unknown"
  std::optional<int> capacity; ///< percent
  std::optional<int> cycles;   ///< absent where the driver does not count: it tells 0 then
  std::optional<double> celsius;
  // Energy in watt-hours: of drivers that count charge, charge × design voltage.
  double energyNow = 0;
  double energyFull = 0;
  double energyDesign = 0;
  double watts = 0; ///< into or out of it, never negative; 0 when unknown
};

/// What a supply's "type" file says; nothing for supplies that are neither (a UPS on a cable has software of
/// its own).
std::optional<PowerSupply::Kind> powerSupplyKind(std::string_view type);
/// True when a "scope" file says that the supply powers only a device, such as a mouse.
bool isDeviceScope(std::string_view scope);

PowerSupply parsePowerSupply(PowerSupply::Kind kind, std::string_view uevent);

/// An entry that powers only a device, by its name in the class ("hidpp_battery_0",
/// "hid-aa:bb:cc:dd:ee:ff-battery"). Entries of devices that are switched off stay; they are not present.
PeripheralReading parseDeviceSupply(std::string_view name, std::string_view uevent);

/// All packs as one battery; nothing without a pack. On external power `systemWatts` is absent: what flows
/// then goes into the battery.
std::optional<BatteryReading> combinedBattery(const std::vector<PowerSupply>& supplies);

} // namespace korvell
