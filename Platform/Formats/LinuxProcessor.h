#pragma once
// What Linux tells about its processors: the ticks of /proc/stat, the load, the processor's name, and which
// cores are the fast ones.

#include "Platform/MachineCounters.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The "cpuN" lines of /proc/stat, in USER_HZ ticks: system includes interrupts and time stolen by a
/// hypervisor, idle includes waiting for I/O; the time of guests is part of user already.
///
/// Nothing when the text ends before the lines do, which stand at its beginning: read more of it.
std::optional<std::map<int, CoreTicks>> parseProcStat(std::string_view text);

/// The first figure of /proc/loadavg.
std::optional<double> parseLoadAverage(std::string_view text);

/// The processor's name in /proc/cpuinfo ("model name"); empty on systems that do not write one there.
std::string parseCPUModel(std::string_view cpuinfo);

/// "0-3,8,10-11" as numbers in order. Ranges that are not plausible are left out.
std::vector<int> parseCPUList(std::string_view text);

/// How many cores are fast and how many are slow, told by a figure of each core that is larger for faster
/// ones: fast are those with at least 80 % of the largest, since boost rankings differ by less between equal
/// cores. Both are 0 when all are alike.
struct CoreKinds {
  int performance = 0;
  int efficiency = 0;
  bool operator==(const CoreKinds&) const = default;
};
CoreKinds coreKinds(const std::vector<std::uint64_t>& capacities);

/// A decimal number such as "12.34" at the beginning of a text.
std::optional<double> parseDecimal(std::string_view text);

} // namespace korvell
