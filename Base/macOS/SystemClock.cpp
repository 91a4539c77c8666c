#include "Base/Date.h"

#include <ctime>

namespace korvell {

// What mach_absolute_time reads, and dispatch timers go by: it stands still in sleep. CLOCK_MONOTONIC, which
// the C++ library's steady clock reads, runs on.
Seconds SystemClock::monotonic() const {
  return Seconds{double(::clock_gettime_nsec_np(CLOCK_UPTIME_RAW)) / 1e9};
}

} // namespace korvell
