#pragma once
// The sources of the processes' figures, examined on the process table itself and on the processes of others.

#include "Platform/Diagnostics.h"
#include "Platform/Linux/SocketDiag.h"
#include "Platform/ProcessTable.h"

#include <functional>
#include <string>
#include <vector>

namespace korvell {

struct ProcessSourceRoots {
  std::string proc = "/proc";
  ProcessTable* table = nullptr;            ///< a fresh one: it is read several times
  SocketSource* sockets = nullptr;          ///< null when the kernel offers none
  std::uint32_t user = 0;                   ///< effective user id; to root everybody is another
  std::function<bool()> helperAnswers = {}; ///< what the system hides is told by the privileged helper
};

/// `clock` measures what a reading costs; null leaves that out. Takes as long as some readings of the table.
std::vector<SourceReport> processSources(const ProcessSourceRoots& roots, const Clock* clock);

} // namespace korvell
