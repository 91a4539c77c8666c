#pragma once
// Batteries, adapters and the energy counters of processor packages (RAPL).

#include "Platform/Formats/PowerSupplies.h"
#include "Platform/Linux/FileReader.h"

#include <string>
#include <vector>

namespace korvell {

class PowerSources {
public:
  explicit PowerSources(std::string sys);

  /// Looks for supplies and packages anew.
  void find(FileReader& reader);
  PowerReading read(FileReader& reader) const;

  struct Supply {
    PowerSupply::Kind kind = PowerSupply::Kind::battery;
    std::string file;
  };
  struct Package {
    int number = 0;
    std::string file;
    std::uint64_t wrapsAt = 0;
    bool readable = false; ///< since Linux 5.10 only the system may read the counter
  };
  const std::vector<Supply>& supplies() const { return supplies_; }
  const std::vector<Package>& packages() const { return packages_; }

private:
  void findSupplies(FileReader& reader);
  void findPackages(FileReader& reader);

  std::string sys_;
  std::vector<Supply> supplies_;
  std::vector<Package> packages_;
};

} // namespace korvell
