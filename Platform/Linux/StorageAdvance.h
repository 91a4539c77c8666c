#pragma once
// A process's own storage bytes, without those of its ended children.
//
// /proc/PID/io swallows a child's whole life when the child is reaped. Reaping shows in the minor faults of
// reaped children (field 11 of stat): no process lives without one. In a cycle in which that number moved,
// what the live threads counted (task/*/io) tells the process's own bytes from the inherited ones; in all
// others the process's counter is exact. Bytes of threads that ended since such a comparison was last made
// are lost to the cycle of the next one.

#include "Platform/Formats/ProcessFiles.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <optional>

namespace korvell {

class StorageAdvance {
public:
  /// Sums task/*/io; asked only when a child was reaped. Nothing: unknown, the cycle counts as still.
  using LiveThreads = std::function<std::optional<ProcessIO>()>;

  /// The first reading. A process that has reaped before is asked for its threads to know what it inherited.
  void begin(const ProcessIO& process, std::uint64_t childFaults, const LiveThreads& liveThreads);
  /// A later reading.
  void advance(const ProcessIO& process, std::uint64_t childFaults, const LiveThreads& liveThreads);
  /// The process's own bytes since the first reading, which counts whole.
  const ProcessIO& total() const { return total_; }

private:
  ProcessIO inheritedOf(const ProcessIO& process, const LiveThreads& liveThreads) const;

  ProcessIO last_;      ///< the process's counter
  ProcessIO inherited_; ///< its part that does not come from live threads, when last compared
  ProcessIO total_;
  std::uint64_t childFaults_ = 0;
};

} // namespace korvell
