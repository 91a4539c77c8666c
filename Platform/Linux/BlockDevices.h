#pragma once
// Which block devices are whole disks, what they moved, and what compressed swap devices take.
//
// Whether a device counts is looked up once and again when the list of devices changes.

#include "Platform/Formats/LinuxDevices.h"
#include "Platform/Linux/FileReader.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class BlockDevices {
public:
  BlockDevices(const std::string& proc, std::string sys);

  std::map<std::uint64_t, ByteCounters> counters(FileReader& reader);
  /// Bytes that zram devices take of the memory.
  std::uint64_t zramBytes(FileReader& reader);

private:
  struct Known {
    std::string name;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::optional<std::uint64_t> identity; ///< absent when the device does not count
  };
  bool isKnown() const;
  void learn();
  void findZram();
  bool counts(std::string_view name) const;

  KeptFile diskStats_;
  std::string folder_;
  std::vector<BlockDeviceLine> lines_;
  std::vector<Known> known_; ///< in the order of the lines
  std::vector<std::string> zramFiles_;
};

} // namespace korvell
