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

} // namespace korvell
