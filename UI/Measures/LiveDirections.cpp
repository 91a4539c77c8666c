#include "UI/Measures/LiveDirections.h"

namespace korvell {

LiveDirections::LiveDirections(Model& model)
    : model_(model), cycles_(model.cycle.observe([this](std::int64_t) { add(); })) {}

void LiveDirections::add() {
  if (!*model_.hasSample) return;
  const auto& now = *model_.snapshot;
  points_.push_back(
      {now.date, now.disk.readRate, now.disk.writeRate, now.network.inRate, now.network.outRate});
  // A clock that was set back leaves points in the future.
  std::erase_if(points_, [&](const DirectionPoint& point) {
    return now.date - point.date > Model::liveSpan || point.date > now.date;
  });
}

} // namespace korvell
