#pragma once
// What the processor packages have used, from the power-capping framework (Documentation/power/powercap).
// Readable by root only since kernel 5.10.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class PackageEnergy {
public:
  /// `sys` is the root of sysfs.
  explicit PackageEnergy(const std::string& sys);
  /// Whether there is a package whose counter can be read.
  bool readable() const { return !packages_.empty(); }
  /// Nanojoules of all packages since the last call; nothing at the first call or when nothing is readable.
  std::optional<std::uint64_t> advance();

private:
  struct Package {
    std::string counter; ///< path of energy_uj
    std::uint64_t range = 0;
    std::optional<std::uint64_t> last;
  };
  std::vector<Package> packages_;
};

} // namespace korvell
