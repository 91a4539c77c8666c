#include "Base/CPUTime.h"

#include <ctime>

namespace korvell {

Seconds threadCPUTime() {
  timespec time{};
  if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) != 0) return {};
  return Seconds{double(time.tv_sec) + double(time.tv_nsec) / 1e9};
}

} // namespace korvell
