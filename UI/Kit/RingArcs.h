#pragma once
// Where the arcs of the score ring lie: 100 points clockwise from the top, first the score, then what was
// lost, in the order of the findings.

#include <optional>
#include <vector>

namespace korvell {

struct RingArc {
  double from = 0;  ///< degrees clockwise from the top
  double sweep = 0; ///< degrees

  bool operator==(const RingArc&) const = default;
};

struct RingArcs {
  RingArc score;
  std::vector<RingArc> lost; ///< one a share, in their order

  bool operator==(const RingArcs&) const = default;
};

/// Arcs of a ring of that radius, `gap` pixels apart. What was lost shares the points that the score leaves:
/// in full where they add up to it, in proportion where they do not (penalties above 100 points). A full
/// score is a closed circle. Every share keeps an arc that can be seen, however small.
RingArcs ringArcs(double score, const std::vector<double>& lost, double radius, double gap = 2.2);
/// Which lost share lies under that angle.
std::optional<std::size_t> shareAt(const RingArcs& arcs, double degrees);

} // namespace korvell
