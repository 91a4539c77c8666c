#pragma once
// Batteries, adapters and the energy counters of processor packages.

#include "Platform/Formats/PowerSupplies.h"
#include "Platform/Linux/PackageEnergy.h"

#include <string>
#include <vector>

namespace korvell {

class PowerSources {
public:
  explicit PowerSources(const std::string& sys);

  /// Looks for supplies and packages anew.
  void find(FileReader& reader);
  PowerReading read(FileReader& reader) const;

  struct Supply {
    PowerSupply::Kind kind = PowerSupply::Kind::battery;
    std::string file;
  };
  const std::vector<Supply>& supplies() const { return supplies_; }
  const PackageEnergy& energy() const { return energy_; }

private:
  std::string folder_;
  std::vector<Supply> supplies_;
  PackageEnergy energy_;
};

} // namespace korvell
