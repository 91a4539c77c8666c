#pragma once
// One process's usage as the privileged helper reads it, and how a map of them travels: records of seven
// unsigned 64-bit words in native byte order (process id, then the fields in order), no header, no count.

#include "Platform/ProcessTable.h"

#include <cstdint>
#include <span>
#include <unordered_map>
#include <vector>

namespace korvell {

struct RusageSample {
  std::uint64_t footprint = 0; ///< bytes
  std::uint64_t cpuTime = 0;   ///< user and system time, in units of the machine's timebase
  std::uint64_t diskRead = 0;  ///< bytes from storage over the process's life
  std::uint64_t diskWritten = 0;
  std::uint64_t energy = 0; ///< nanojoules
  std::uint64_t start = 0;  ///< as ProcessCounters::start

  bool operator==(const RusageSample&) const = default;

  using Map = std::unordered_map<ProcessID, RusageSample>;
  static constexpr std::size_t recordSize = 56;

  static std::vector<std::uint8_t> encode(const Map& samples);
  /// Whole records only: bytes that do not fill one are ignored, a later record of the same id wins.
  static Map decode(std::span<const std::uint8_t> data);
};

} // namespace korvell
