#include "Platform/Formats/SleepingMemory.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace korvell {

namespace {

/// Time in which the rotation comes round.
constexpr double rotationSeconds = 20;
/// Change of what is unexplained, as a share of the machine's anonymous memory.
constexpr double unexplainedShare = 0.01;

double sum(const AnonymousMemory& machine) {
  return static_cast<double>(machine.resident) + static_cast<double>(machine.swapped);
}

/// Bytes of the machine's anonymous memory that no process shows.
double unexplained(std::span<const ProcessCounters> processes, const AnonymousMemory& machine) {
  auto bytes = sum(machine);
  for (const auto& process : processes) bytes -= static_cast<double>(process.footprint);
  return bytes;
}

} // namespace

std::vector<std::size_t> SleepingMemory::due(std::span<const ProcessCounters> processes,
                                             const Machine& machine, Seconds sinceLastCycle) {
  std::vector<std::size_t> indices;
  readAll_ = !settled_;
  if (!settled_ || processes.empty()) return indices;
  if (machine &&
      std::abs(unexplained(processes, *machine) - unexplainedBefore_) > unexplainedShare * sum(*machine)) {
    readAll_ = true;
    indices.resize(processes.size());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    return indices;
  }
  const auto share = std::min(1.0, sinceLastCycle.count() / rotationSeconds);
  const auto count = static_cast<std::size_t>(std::ceil(share * static_cast<double>(processes.size())));
  auto next = std::ranges::upper_bound(processes, last_, {}, &ProcessCounters::pid);
  while (indices.size() < count) {
    if (next == processes.end()) next = processes.begin();
    indices.push_back(static_cast<std::size_t>(next - processes.begin()));
    last_ = next->pid;
    ++next;
  }
  return indices;
}

void SleepingMemory::settle(std::span<const ProcessCounters> processes, const Machine& machine) {
  settled_ = true;
  if (machine && readAll_) unexplainedBefore_ = unexplained(processes, *machine);
}

} // namespace korvell
