#include "Platform/Linux/BusHandles.h"

#include <algorithm>
#include <climits>
#include <ctime>

namespace korvell {

int millisecondsUntil(std::uint64_t microseconds) {
  if (microseconds == UINT64_MAX) return -1;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const auto past = std::uint64_t(now.tv_sec) * 1'000'000 + std::uint64_t(now.tv_nsec) / 1'000;
  if (microseconds <= past) return 0;
  return int(std::min<std::uint64_t>((microseconds - past + 999) / 1'000, INT_MAX));
}

} // namespace korvell
