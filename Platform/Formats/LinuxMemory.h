#pragma once
// What Linux tells about its memory: /proc/meminfo, pressure-stall information and compressed swap devices.

#include "Platform/MachineCounters.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvell {

/// The lines of /proc/meminfo that Korvell uses, in bytes.
struct MemInfo {
  std::uint64_t total = 0;
  std::uint64_t free = 0;
  std::uint64_t available = 0; ///< what programs may still take without swapping
  std::uint64_t buffers = 0;
  std::uint64_t cached = 0; ///< page cache, shared memory included
  std::uint64_t swapTotal = 0;
  std::uint64_t swapFree = 0;
  std::uint64_t zswap = 0; ///< what compressed pages take
  std::uint64_t anonPages = 0;
  std::uint64_t shmem = 0;
  std::uint64_t sReclaimable = 0; ///< kernel caches that can be dropped
  bool operator==(const MemInfo&) const = default;
};

/// Nothing without a total. Kernels that do not tell what is available get free + cached + buffers.
std::optional<MemInfo> parseMemInfo(std::string_view text);

/// Shares of time, in percent over ten seconds, in which some or all tasks waited for memory.
struct MemoryStall {
  double some = 0;
  double full = 0;
  bool operator==(const MemoryStall&) const = default;
};
/// Of /proc/pressure/memory.
std::optional<MemoryStall> parseMemoryStall(std::string_view text);

/// Stalls alone are no pressure: a group of processes that thrashes inside its own limit raises them while
/// most of the memory is free. Critical: less than 5 % available, or less than 10 % with tasks standing still
/// 10 % of the time; warning: less than 12 %, or less than 25 % with some tasks waiting 10 % of the time.
PressureLevel memoryPressure(const MemInfo& info, const std::optional<MemoryStall>& stall);

/// The bytes that a zram device takes: the third figure of its mm_stat.
std::uint64_t parseZramUse(std::string_view mmStat);

MemoryCounters memoryCounters(const MemInfo& info, const std::optional<MemoryStall>& stall,
                              std::uint64_t zramBytes);

} // namespace korvell
