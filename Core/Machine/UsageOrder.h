#pragma once
// The figures that applications and processes are sorted by.

#include "Core/Machine/Models.h"

#include <vector>

namespace korvell {

enum class UsageKey { cpu, memory, disk, network, energy };

template <>
struct EnumTable<UsageKey> {
  using enum UsageKey;
  static constexpr EnumCase<UsageKey> cases[] = {{cpu, "cpu", "CPU"},
                                                 {memory, "memory", "Memory"},
                                                 {disk, "disk", "Disk"},
                                                 {network, "network", "Network"},
                                                 {energy, "energy", "Energy"}};
};

/// Percent of one core, bytes, bytes a second in both directions, or watts.
double usageValue(UsageKey key, const AppUsage& app);
double usageValue(UsageKey key, const ProcessUsage& process);

/// The largest first; equal ones by name, then by key or process id, so that a list does not jump about.
void sortByUsage(std::vector<AppUsage>& apps, UsageKey key);
void sortByUsage(std::vector<ProcessUsage>& processes, UsageKey key);

} // namespace korvell
