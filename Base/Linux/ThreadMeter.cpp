#include "Base/ThreadMeter.h"

#include "Base/CPUTime.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <thread>

namespace korvell {

namespace {

/// As text with its end; empty where there is nothing.
template <std::size_t size>
void readStart(int descriptor, char (&buffer)[size]) {
  const auto n = descriptor < 0 ? 0 : ::pread(descriptor, buffer, size - 1, 0);
  buffer[n > 0 ? n : 0] = '\0';
}

} // namespace

ThreadMeter::ThreadMeter() : counts_(::open("/proc/thread-self/schedstat", O_RDONLY | O_CLOEXEC)) {}

ThreadMeter::Times ThreadMeter::read() const {
  // "COMPUTING QUEUED SLICES", the times in nanoseconds
  char counts[96];
  readStart(counts_.get(), counts);
  char* rest = counts;
  std::strtoull(counts, &rest, 10);
  char* end = rest;
  const Seconds queued{double(std::strtoull(rest, &end, 10)) / 1e9};
  const Seconds computing = threadCPUTime();
  if (end == rest) return {.computing = computing};
  return {.computing = computing, .waiting = SystemClock().monotonic() - queued - computing};
}

bool ThreadMeter::isMachineBusy() {
  // "LOAD1 LOAD5 LOAD15 READY/ALL LAST", the caller among those that are ready
  const Descriptor file(::open("/proc/loadavg", O_RDONLY | O_CLOEXEC));
  char load[96];
  readStart(file.get(), load);
  unsigned ready = 0;
  return std::sscanf(load, "%*s %*s %*s %u", &ready) == 1 && ready > std::thread::hardware_concurrency();
}

} // namespace korvell
