#include "Platform/Linux/PowerSources.h"

namespace korvell {

PowerSources::PowerSources(const std::string& sys, std::shared_ptr<SharedReadings> shared)
    : folder_(sys + "/class/power_supply/"), shared_(std::move(shared)) {}

void PowerSources::find(FileReader& reader) {
  shared_->findPackages(reader);
  supplies_.clear();
  for (const auto& name : folderNames(folder_)) {
    const auto scope = reader.read(folder_ + name + "/scope");
    if (scope && isDeviceScope(*scope)) continue;
    const auto type = reader.read(folder_ + name + "/type");
    const auto kind = type ? powerSupplyKind(*type) : std::nullopt;
    if (kind) supplies_.push_back({*kind, folder_ + name + "/uevent"});
  }
}

PowerReading PowerSources::read(FileReader& reader) const {
  PowerReading reading;
  std::vector<PowerSupply> supplies;
  for (const auto& supply : supplies_)
    if (const auto text = reader.read(supply.file)) supplies.push_back(parsePowerSupply(supply.kind, *text));
  reading.battery = combinedBattery(supplies);
  reading.packages = shared_->energy(SharedReadings::Half::machine, reader);
  reading.packagesRefused = !energy().packages().empty() && !energy().isReadable();
  return reading;
}

} // namespace korvell
