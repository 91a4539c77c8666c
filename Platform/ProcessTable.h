#pragma once
// Every process and what it has used so far. Raw counters only: shares, rates, identities and groups are made
// by Core/Machine/ProcessSampler.
//
// One thread at a time (the sampler's queue). A process that vanishes while it is read is left out.

#include "Platform/MachineCounters.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvell {

using ProcessID = std::int32_t;

/// Which of a process's counters the system hid from this user.
enum HiddenFigure : std::uint8_t {
  hiddenCPU = 1,
  hiddenMemory = 2,
  hiddenDisk = 4,
  hiddenEnergy = 8,
};

struct ProcessCounters {
  ProcessID pid = 0;
  ProcessID parent = 0;
  std::string comm;            ///< the kernel's short command name
  std::uint64_t start = 0;     ///< start time in raw ticks of the system's own clock; with pid an identity
  std::uint64_t cpuNanos = 0;  ///< user and system time
  std::uint64_t footprint = 0; ///< bytes that this process alone keeps from being free
  std::uint64_t diskRead = 0;  ///< storage bytes over the process's life
  std::uint64_t diskWritten = 0;
  std::uint64_t energyNanojoules = 0;
  ByteCounters network;    ///< received and sent, as far as the system attributes them
  std::uint8_t hidden = 0; ///< HiddenFigure bits; hidden figures are 0
  bool operator==(const ProcessCounters&) const = default;
};

} // namespace korvell
