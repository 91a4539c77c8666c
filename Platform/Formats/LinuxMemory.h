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
  std::uint64_t sReclaimable = 0;  ///< kernel caches that can be dropped
  std::uint64_t hugePages = 0;     ///< set aside for huge pages of any size, taken or not
  std::uint64_t freeHugePages = 0; ///< of the default size, not taken
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

/// What the ARC, the cache of ZFS, gives back when memory is short: what it holds above its floor. Of
/// /proc/spl/kstat/zfs/arcstats. The kernel counts it neither as cache nor as available.
std::uint64_t parseReclaimableARC(std::string_view arcStats);

/// Stalls come first: where the kernel tells them, memory without any is never critical. Alone they are no
/// pressure: a group of processes that thrashes inside its own limit raises them while most of the memory is
/// free. Critical: less than 10 % available with tasks standing still 10 % of the time, or less than 5 % with
/// some tasks waiting 10 % of the time (or, without stalls to ask, at all); warning: less than 12 %, or less
/// than 25 % with some tasks waiting 10 % of the time. Percent are those of the memory that is not set aside
/// for huge pages: nobody else gets those, however many are free.
PressureLevel memoryPressure(const MemInfo& info, const std::optional<MemoryStall>& stall);

/// The bytes that a zram device takes: the third figure of its mm_stat.
std::uint64_t parseZramUse(std::string_view mmStat);

/// Free huge pages are free memory; `reclaimableARC` bytes of the ARC are cache and available. The parts add
/// up to at most the total, whatever is told: what is free counts first, then what is cached.
MemoryCounters memoryCounters(MemInfo info, const std::optional<MemoryStall>& stall, std::uint64_t zramBytes,
                              std::uint64_t reclaimableARC);

} // namespace korvell
