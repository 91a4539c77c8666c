#include "App/Model.h"

#include "App/MenuBarLabel.h"

namespace korvell {

Model::Model(const Queue& main, const UserDefaults& defaults)
    : snapshot(main, SystemSnapshot::empty(main.clock().now())), known(main), privileged(main), sensors(main),
      peripherals(main), projects(main), startupItems(main), alerts(main), report(main), live(main),
      totals(main), historyProblem(main), selection(main), hasSample(main), cycle(main),
      menuBar(main, defaults) {}

void Model::publishMenuBar() {
  const auto figures = MenuBarFigures::of(*snapshot, *report);
  menuBar.update(figures.score, figures.cpu, figures.memory, snapshot->cpu.total);
}

void Model::extendLiveSeries(Publication& publication) {
  const Date now = snapshot->date;
  auto series = *live;
  for (const auto& metric : allCases<Metric>()) {
    auto& points = series[metric.value];
    points.push_back({now, metricValue(metric.value, *snapshot)});
    // A clock that was set back leaves points in the future; they do not belong to the last minutes either.
    std::erase_if(points,
                  [&](const HistoryPoint& point) { return now - point.date > liveSpan || point.date > now; });
  }
  publication.set(live, std::move(series));
}

} // namespace korvell
