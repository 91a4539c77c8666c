#pragma once
// Bytes received and sent by each process on macOS, as nettop prints them once as comma-separated values:
//
//   ,bytes_in,bytes_out,
//   Google Chrome H.99991,100000,10000,
//
// The first field is a shortened process name, a point and the process id. Counters are the totals of the
// process's present connections, so they go down when connections close.

#include "Base/Shell.h"
#include "Platform/ProcessTable.h"

#include <string_view>
#include <unordered_map>

namespace korvell {

using ProcessTraffic = std::unordered_map<ProcessID, ByteCounters>;

/// A row that does not parse (a name with a comma shifts its columns) is skipped.
ProcessTraffic parseProcessTraffic(std::string_view listing);

/// Asks nettop for one listing, for at most 3 seconds. Empty when it fails or takes longer.
ProcessTraffic readProcessTraffic(const CommandRunner& run);

} // namespace korvell
