#include "Platform/Formats/LinuxMemory.h"

#include "Platform/Formats/LinuxProcessor.h"
#include "Platform/Formats/TextScanner.h"

#include <algorithm>
#include <limits>

namespace korvell {

namespace {

struct Line {
  std::string_view key;
  std::uint64_t MemInfo::*field;
};

constexpr Line lines[] = {
    {"MemTotal:", &MemInfo::total},
    {"MemFree:", &MemInfo::free},
    {"MemAvailable:", &MemInfo::available},
    {"Buffers:", &MemInfo::buffers},
    {"Cached:", &MemInfo::cached},
    {"SwapTotal:", &MemInfo::swapTotal},
    {"SwapFree:", &MemInfo::swapFree},
    {"Zswap:", &MemInfo::zswap},
    {"AnonPages:", &MemInfo::anonPages},
    {"Shmem:", &MemInfo::shmem},
    {"SReclaimable:", &MemInfo::sReclaimable},
    {"Hugetlb:", &MemInfo::hugePages},
};

constexpr auto most = std::numeric_limits<std::uint64_t>::max();

std::uint64_t less(std::uint64_t a, std::uint64_t b) { return a > b ? a - b : 0; }
std::uint64_t sum(std::uint64_t a, std::uint64_t b) { return a > most - b ? most : a + b; }
std::uint64_t times(std::uint64_t a, std::uint64_t b) { return b > 0 && a > most / b ? most : a * b; }

} // namespace

std::optional<MemInfo> parseMemInfo(std::string_view text) {
  MemInfo info;
  bool toldAvailable = false;
  std::uint64_t hugePages = 0, freeHugePages = 0, hugePageSize = 0;
  TextScanner scanner(text);
  do {
    const auto key = scanner.word();
    if (key == "HugePages_Total:") hugePages = scanner.number();
    if (key == "HugePages_Free:") freeHugePages = scanner.number();
    if (key == "Hugepagesize:") hugePageSize = times(scanner.number(), 1024);
    for (const auto& line : lines) {
      if (line.key != key) continue;
      info.*line.field = times(scanner.number(), 1024);
      toldAvailable |= line.field == &MemInfo::available;
      break;
    }
  } while (scanner.nextLine());
  if (info.total == 0) return std::nullopt;
  info.freeHugePages = times(freeHugePages, hugePageSize);
  info.hugePages =
      std::max(info.hugePages, times(hugePages, hugePageSize)); // older kernels have no line of the sum
  if (!toldAvailable) info.available = sum(sum(info.free, info.cached), info.buffers);
  return info;
}

std::optional<MemoryStall> parseMemoryStall(std::string_view text) {
  std::optional<MemoryStall> stall;
  TextScanner scanner(text);
  do {
    const auto kind = scanner.word();
    auto average = scanner.word();
    if (!average.starts_with("avg10=")) continue;
    average.remove_prefix(6);
    if (!stall) stall.emplace();
    if (kind == "some") stall->some = parseDecimal(average).value_or(0);
    if (kind == "full") stall->full = parseDecimal(average).value_or(0);
  } while (scanner.nextLine());
  return stall;
}

PressureLevel memoryPressure(const MemInfo& info, const std::optional<MemoryStall>& stall) {
  const auto usable = less(info.total, info.hugePages);
  if (usable == 0) return PressureLevel::normal;
  const double available = double(info.available) / double(usable) * 100;
  const auto [some, full] = stall.value_or(MemoryStall{});
  const bool waiting = some >= 10;
  if ((available < 5 && (waiting || !stall)) || (available < 10 && full >= 10))
    return PressureLevel::critical;
  if (available < 12 || (available < 25 && waiting)) return PressureLevel::warning;
  return PressureLevel::normal;
}

std::uint64_t parseReclaimableARC(std::string_view arcStats) {
  std::uint64_t size = 0, floor = 0;
  TextScanner scanner(arcStats);
  do {
    const auto name = scanner.word();
    if (name != "size" && name != "c_min") continue;
    scanner.skipWords(1); // its type
    (name == "size" ? size : floor) = scanner.number();
  } while (scanner.nextLine());
  return less(size, floor);
}

std::uint64_t parseZramUse(std::string_view mmStat) {
  TextScanner scanner(mmStat);
  scanner.skipWords(2); // uncompressed size, compressed size
  return scanner.number();
}

MemoryCounters memoryCounters(MemInfo info, const std::optional<MemoryStall>& stall, std::uint64_t zramBytes,
                              std::uint64_t reclaimableARC) {
  info.available = std::min(sum(info.available, reclaimableARC), info.total);
  auto room = info.total;
  const auto part = [&room](std::uint64_t bytes) {
    const auto taken = std::min(bytes, room);
    room -= taken;
    return taken;
  };
  // What is free and cached comes first: file systems of containers tell them of the container, and beside
  // its total some of the rest of the host.
  part(sum(info.free, info.freeHugePages));
  MemoryUse use;
  use.cached =
      part(sum(sum(less(info.cached, info.shmem), info.buffers), sum(info.sReclaimable, reclaimableARC)));
  use.app = part(sum(info.anonPages, info.shmem));
  use.compressed = part(sum(info.zswap, zramBytes));
  use.wired = room;
  use.swapUsed = less(info.swapTotal, info.swapFree);
  use.pressure = memoryPressure(info, stall);
  return {info.total, use};
}

} // namespace korvell
