#pragma once
// The last minutes of what the model's series know as sums only: the disk's reading and writing, the
// network's two directions. Kept for as long as Korvell runs, so that a page that is opened has them. Main
// queue only.

#include "App/Model.h"

#include <vector>

namespace korvell {

struct DirectionPoint {
  Date date;
  double read = 0, written = 0, in = 0, out = 0; ///< bytes a second
};

class LiveDirections {
public:
  /// The model outlives it.
  explicit LiveDirections(Model& model);

  /// Oldest first, at most the model's live span.
  const std::vector<DirectionPoint>& points() const { return points_; }

private:
  void add();

  Model& model_;
  std::vector<DirectionPoint> points_;
  Subscription cycles_;
};

} // namespace korvell
