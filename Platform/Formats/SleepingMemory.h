#pragma once
// Which processes' memory is read again although they have not run, for memory can be changed from outside.
//
// In rotation, so that with a cycle every 10 s no reading is older than 30; and all at once when the
// machine's anonymous memory moved by 1 % more than what the processes show explains. Forks that share memory
// make the unexplained part negative; only its change matters.

#include "Platform/Formats/ProcessFiles.h"
#include "Platform/ProcessTable.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace korvell {

class SleepingMemory {
public:
  using Machine = std::optional<AnonymousMemory>; ///< absent when it could not be read

  /// Whose turn it is in this cycle: indices into `processes`, which are by ascending id and show what they
  /// showed last, or now if they ran. None in the first cycle. After the readings settle() is told about
  /// them.
  std::vector<std::size_t> due(std::span<const ProcessCounters> processes, const Machine& machine,
                               Seconds sinceLastCycle);
  void settle(std::span<const ProcessCounters> processes, const Machine& machine);

private:
  bool settled_ = false;         ///< the first cycle is over
  bool readAll_ = true;          ///< in this cycle
  double unexplainedBefore_ = 0; ///< bytes, when all memory was last read
  ProcessID last_ = 0;           ///< last process whose turn it was
};

} // namespace korvell
