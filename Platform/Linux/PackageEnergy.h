#pragma once
// What the processor packages have used, from the power-capping framework (RAPL;
// Documentation/power/powercap). Since Linux 5.10 only root may read the counters.

#include "Platform/Linux/FileReader.h"
#include "Platform/MachineCounters.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace korvell {

class PackageEnergy {
public:
  struct Package {
    int number = 0;
    std::string file;
    std::uint64_t wrapsAt = 0;
    bool readable = false;
  };

  /// `sys` is the root of sysfs.
  explicit PackageEnergy(const std::string& sys) : folder_(sys + "/class/powercap/") {}

  /// Looks for packages anew.
  void find(FileReader& reader);
  std::map<int, EnergyCounter> read(FileReader& reader) const;
  const std::vector<Package>& packages() const { return packages_; }
  bool isReadable() const;

private:
  std::string folder_;
  std::vector<Package> packages_;
};

} // namespace korvell
