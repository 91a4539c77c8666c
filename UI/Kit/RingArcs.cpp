#include "UI/Kit/RingArcs.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <numeric>
#include <utility>

namespace korvell {

namespace {

constexpr double round = 360;
constexpr double leastVisible = 1; // pixels of arc

/// Widens what is too narrow to be seen; the widest gives what that takes.
void widenNarrow(std::vector<double>& sweeps, double least) {
  double taken = 0;
  for (auto& sweep : sweeps)
    if (sweep > 0 && sweep < least) taken += least - std::exchange(sweep, least);
  *std::max_element(sweeps.begin(), sweeps.end()) -= taken;
}

} // namespace

RingArcs ringArcs(double score, const std::vector<double>& lost, double radius, double gap) {
  auto kept = std::clamp(score, 0.0, 100.0);
  auto sum = std::accumulate(lost.begin(), lost.end(), 0.0);
  auto pixel = 180 / std::numbers::pi / radius; // in degrees
  std::vector<double> sweeps{kept * round / 100};
  for (auto points : lost) sweeps.push_back(sum > 0 ? (100 - kept) * points / sum * round / 100 : 0);
  auto count = std::count_if(sweeps.begin(), sweeps.end(), [](double sweep) { return sweep > 0; });
  auto space = count > 1 || (kept < 100 && sum <= 0) ? gap * pixel : 0;
  widenNarrow(sweeps, space + leastVisible * pixel);

  RingArcs arcs;
  double at = 0;
  auto next = [&](double sweep) {
    RingArc arc = sweep > 0 ? RingArc{at + space / 2, sweep - space} : RingArc{at, 0};
    at += sweep;
    return arc;
  };
  arcs.score = next(sweeps[0]);
  for (std::size_t i = 1; i < sweeps.size(); ++i) arcs.lost.push_back(next(sweeps[i]));
  return arcs;
}

std::optional<std::size_t> shareAt(const RingArcs& arcs, double degrees) {
  constexpr double reach = 3; // a narrow arc is hit from beside it
  std::optional<std::size_t> nearest;
  auto least = reach;
  for (std::size_t i = 0; i < arcs.lost.size(); ++i) {
    const auto& arc = arcs.lost[i];
    if (arc.sweep <= 0) continue;
    auto distance = std::max({0.0, arc.from - degrees, degrees - arc.from - arc.sweep});
    if (distance > least || (nearest && distance == least)) continue;
    nearest = i;
    least = distance;
  }
  auto inScore = degrees >= arcs.score.from && degrees <= arcs.score.from + arcs.score.sweep;
  return inScore && least > 0 ? std::nullopt : nearest;
}

} // namespace korvell
