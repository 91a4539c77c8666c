#include "Base/Date.h"

#include <ctime>

namespace korvell {

// Stands still in sleep; CLOCK_BOOTTIME would run on.
Seconds SystemClock::monotonic() const {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return Seconds{double(time.tv_sec) + double(time.tv_nsec) / 1e9};
}

} // namespace korvell
