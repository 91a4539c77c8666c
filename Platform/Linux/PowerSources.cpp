#include "Platform/Linux/PowerSources.h"

#include "Base/Text.h"

namespace korvell {

PowerSources::PowerSources(std::string sys) : sys_(std::move(sys)) {}

void PowerSources::find(FileReader& reader) {
  findSupplies(reader);
  findPackages(reader);
}

void PowerSources::findSupplies(FileReader& reader) {
  supplies_.clear();
  const auto folder = sys_ + "/class/power_supply/";
  for (const auto& name : folderNames(folder)) {
    const auto scope = reader.read(folder + name + "/scope");
    if (scope && isDeviceScope(*scope)) continue;
    const auto type = reader.read(folder + name + "/type");
    const auto kind = type ? powerSupplyKind(*type) : std::nullopt;
    if (kind) supplies_.push_back({*kind, folder + name + "/uevent"});
  }
}

void PowerSources::findPackages(FileReader& reader) {
  packages_.clear();
  constexpr std::string_view prefix = "intel-rapl:"; // the name of the interface, on AMD too
  const auto folder = sys_ + "/class/powercap/";
  for (const auto& name : folderNames(folder)) {
    // Sub-zones ("intel-rapl:0:1") are part of their package.
    const auto number = name.starts_with(prefix)
                            ? parseInteger<int>(std::string_view(name).substr(prefix.size()))
                            : std::nullopt;
    const auto zone = number ? reader.read(folder + name + "/name") : std::nullopt;
    if (!zone || !zone->starts_with("package")) continue;
    Package package{.number = *number, .file = folder + name + "/energy_uj"};
    if (const auto range = reader.read(folder + name + "/max_energy_range_uj"))
      package.wrapsAt = parseInteger<std::uint64_t>(trimmed(*range)).value_or(0);
    package.readable = reader.read(package.file).has_value();
    packages_.push_back(std::move(package));
  }
}

PowerReading PowerSources::read(FileReader& reader) const {
  PowerReading reading;
  std::vector<PowerSupply> supplies;
  for (const auto& supply : supplies_)
    if (const auto text = reader.read(supply.file)) supplies.push_back(parsePowerSupply(supply.kind, *text));
  reading.battery = combinedBattery(supplies);

  for (const auto& package : packages_) {
    if (!package.readable) continue;
    const auto text = reader.read(package.file);
    const auto energy = text ? parseInteger<std::uint64_t>(trimmed(*text)) : std::nullopt;
    if (energy) reading.packages[package.number] = {*energy, package.wrapsAt};
  }
  return reading;
}

} // namespace korvell
