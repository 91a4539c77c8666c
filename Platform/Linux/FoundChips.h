#pragma once
// Which chips there are to read: hwmon chips, thermal zones that are no hwmon chip as well, and cards of
// NVIDIA's driver. Looks at many files; done seldom.

#include "Platform/Linux/SensorFiles.h"
#include "Platform/TemperatureSources.h"

#include <cstddef>
#include <string>
#include <vector>

namespace korvell {

struct FoundChip {
  struct Input {
    std::string file;
    std::string faultFile;        ///< empty where the driver has none
    std::string minFile, maxFile; ///< likewise
    std::size_t place = 0;        ///< among the chip's temperatures or fans
  };

  SensorChip chip;    ///< names, without values and limits
  std::string source; ///< its folder, or the address of NVIDIA's card
  std::vector<Input> temperatures;
  std::vector<Input> fans;
  /// Say "suspended" while the device sleeps; only where its driver may put it to sleep.
  std::vector<std::string> sleepFiles;
  /// A disk with platters: being asked keeps it from sleeping, and wakes some.
  bool isRotatingDisk = false;
  bool isNvidia = false;
};

std::vector<FoundChip> findChips(SensorFiles& files, const std::string& proc, const std::string& sys);

} // namespace korvell
