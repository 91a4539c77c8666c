#pragma once
// Batteries, adapters and the energy counters of processor packages.

#include "Platform/Formats/PowerSupplies.h"
#include "Platform/Linux/SharedReadings.h"

#include <memory>
#include <string>
#include <vector>

namespace korvell {

class PowerSources {
public:
  /// `sys` is the root of sysfs; the packages' energy comes from `shared`.
  PowerSources(const std::string& sys, std::shared_ptr<SharedReadings> shared);

  /// Looks for supplies and packages anew.
  void find(FileReader& reader);
  PowerReading read(FileReader& reader) const;

  struct Supply {
    PowerSupply::Kind kind = PowerSupply::Kind::battery;
    std::string file;
  };
  const std::vector<Supply>& supplies() const { return supplies_; }
  const PackageEnergy& energy() const { return shared_->packages(); }

private:
  std::string folder_;
  std::vector<Supply> supplies_;
  std::shared_ptr<SharedReadings> shared_;
};

} // namespace korvell
