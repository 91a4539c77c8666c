#include "Core/Machine/UsageOrder.h"

#include <algorithm>

namespace korvell {

double usageValue(UsageKey key, const AppUsage& app) {
  double sum = 0;
  for (const auto& process : app.processes) sum += usageValue(key, process);
  return sum;
}

double usageValue(UsageKey key, const ProcessUsage& process) {
  switch (key) {
  case UsageKey::cpu:
    return process.cpu;
  case UsageKey::memory:
    return double(process.memory);
  case UsageKey::disk:
    return process.diskRead + process.diskWrite;
  case UsageKey::network:
    return process.netIn + process.netOut;
  case UsageKey::energy:
    return process.power;
  }
  return 0;
}

void sortByUsage(std::vector<AppUsage>& apps, UsageKey key) {
  // The sums are made once each, not in every comparison.
  std::vector<std::pair<double, std::size_t>> order;
  for (std::size_t i = 0; i < apps.size(); ++i) order.emplace_back(usageValue(key, apps[i]), i);
  std::sort(order.begin(), order.end(), [&apps](const auto& a, const auto& b) {
    const auto &left = apps[a.second], &right = apps[b.second];
    return a.first != b.first ? a.first > b.first
                              : std::tie(left.name, left.id) < std::tie(right.name, right.id);
  });
  std::vector<AppUsage> sorted;
  sorted.reserve(apps.size());
  for (const auto& [value, index] : order) sorted.push_back(std::move(apps[index]));
  apps = std::move(sorted);
}

void sortByUsage(std::vector<ProcessUsage>& processes, UsageKey key) {
  std::sort(processes.begin(), processes.end(), [key](const auto& a, const auto& b) {
    const auto left = usageValue(key, a), right = usageValue(key, b);
    return left != right ? left > right : std::tie(a.name, a.pid) < std::tie(b.name, b.pid);
  });
}

} // namespace korvell
