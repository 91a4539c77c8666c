#include "Platform/Formats/EnergyCounters.h"

namespace korvell {

std::uint64_t microjoulesBetween(const std::map<int, EnergyCounter>& previous,
                                 const std::map<int, EnergyCounter>& now) {
  std::uint64_t sum = 0;
  for (const auto& [package, counter] : now) {
    const auto before = previous.find(package);
    if (before == previous.end()) continue;
    const auto old = before->second.microjoules;
    if (counter.microjoules >= old)
      sum += counter.microjoules - old;
    else if (counter.wrapsAt > old)
      sum += counter.wrapsAt - old + counter.microjoules;
  }
  return sum;
}

std::vector<std::uint64_t> energyShares(std::uint64_t energy, std::span<const std::uint64_t> cpuTimes) {
  std::vector<std::uint64_t> shares(cpuTimes.size());
  double total = 0;
  for (const auto time : cpuTimes) total += static_cast<double>(time);
  if (total <= 0) return shares;
  for (std::size_t i = 0; i < shares.size(); ++i)
    shares[i] =
        static_cast<std::uint64_t>(static_cast<double>(energy) * static_cast<double>(cpuTimes[i]) / total);
  return shares;
}

} // namespace korvell
