#include "Platform/Linux/PackageEnergy.h"

#include "Base/Text.h"

#include <algorithm>

namespace korvell {

void PackageEnergy::find(FileReader& reader) {
  packages_.clear();
  constexpr std::string_view prefix = "intel-rapl:"; // the name of the interface, on AMD too
  for (const auto& name : folderNames(folder_)) {
    // Sub-zones ("intel-rapl:0:1") are part of their package, "intel-rapl-mmio:0" is the same once more.
    const auto number = name.starts_with(prefix)
                            ? parseInteger<int>(std::string_view(name).substr(prefix.size()))
                            : std::nullopt;
    const auto zone = number ? reader.read(folder_ + name + "/name") : std::nullopt;
    if (!zone || !zone->starts_with("package")) continue;
    Package package{.number = *number, .file = folder_ + name + "/energy_uj"};
    if (const auto range = reader.read(folder_ + name + "/max_energy_range_uj"))
      package.wrapsAt = parseInteger<std::uint64_t>(trimmed(*range)).value_or(0);
    package.readable = reader.read(package.file).has_value();
    packages_.push_back(std::move(package));
  }
}

std::map<int, EnergyCounter> PackageEnergy::read(FileReader& reader) const {
  std::map<int, EnergyCounter> counters;
  for (const auto& package : packages_) {
    if (!package.readable) continue;
    const auto text = reader.read(package.file);
    const auto energy = text ? parseInteger<std::uint64_t>(trimmed(*text)) : std::nullopt;
    if (energy) counters[package.number] = {*energy, package.wrapsAt};
  }
  return counters;
}

bool PackageEnergy::isReadable() const { return std::ranges::any_of(packages_, &Package::readable); }

} // namespace korvell
