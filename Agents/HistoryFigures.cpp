#include "Agents/HistoryFigures.h"

namespace korvell {

MinuteFigures figuresOf(const HistoryValues& values) {
  const auto told = [&](HistoryColumn column) {
    return values[column] > 0 ? std::optional(values[column]) : std::nullopt;
  };
  return {told(cpuColumn), told(memoryColumn), told(diskColumn),     told(networkColumn),
          told(gpuColumn), told(energyColumn), told(diskWriteColumn)};
}

std::vector<AppShare> sharesOf(const std::vector<AppTotal>& totals) {
  std::vector<AppShare> shares;
  for (const auto& total : totals)
    if (total.value > 0) shares.push_back({total.name, total.value});
  return shares;
}

} // namespace korvell
