#pragma once
// What the benchmarks measure with: CPU time, so that a busy machine disturbs little, and medians of rounds
// in which the sides take turns.

#include "Base/Date.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace korvell {

/// User and system time of this process so far, with all its threads.
inline Seconds cpuTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return Seconds{double(time.tv_sec) + double(time.tv_nsec) / 1e9};
}

/// The same of the children that it has waited for.
inline Seconds childrenCPUTime() {
  rusage usage{};
  getrusage(RUSAGE_CHILDREN, &usage);
  const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) / 1e6; };
  return Seconds{seconds(usage.ru_utime) + seconds(usage.ru_stime)};
}

inline double cpuMilliseconds() { return cpuTime().count() * 1e3; }
inline double cpuMicroseconds() { return cpuTime().count() * 1e6; }

/// What of this process is in memory, its libraries included; 0 where the system does not tell it in /proc.
inline long residentBytes() {
  long pages = 0, resident = 0;
  if (FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
    std::fclose(file);
  }
  return resident * ::sysconf(_SC_PAGESIZE);
}

/// Of an odd number of values the middle one.
inline double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

} // namespace korvell
