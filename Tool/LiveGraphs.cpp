#include "Tool/LiveGraphs.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Tool/HistoryChart.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr struct {
  Metric metric;
  KnownPart part;
} graphs[] = {{Metric::cpu, KnownPart::processor},
              {Metric::memory, KnownPart::memory},
              {Metric::disk, KnownPart::disks},
              {Metric::network, KnownPart::network}};
constexpr int gap = 3;        ///< between two graphs
constexpr int narrowest = 24; ///< of one graph
constexpr int fewestRows = 2, goodRows = 4, mostRows = 12;
constexpr Seconds shortestCover{4}, longestCover{15};
/// A rate below this is drawn as the little that it is, however quiet the last minutes were.
constexpr double smallRate = 100'000;

/// How many graphs stand side by side: 0 where there is no room for them.
struct Grid {
  int beside = 0, rows = 0;
  int bands() const { return int(std::size(graphs)) / beside; }
};

/// The widest graphs that are high enough to be read; else the highest.
Grid gridFor(int width, int height) {
  Grid best;
  for (const int beside : {1, 2, 4}) {
    if ((width + gap) / beside - gap < narrowest) break;
    Grid grid{beside, 0};
    grid.rows = std::min(mostRows, (height - 1) / grid.bands() - 1);
    if (grid.rows > best.rows) best = grid;
    if (best.rows >= goodRows) break;
  }
  return best.rows >= fewestRows ? best : Grid();
}

std::string padded(std::string line, int width) {
  line.append(std::size_t(std::max(0, width - inkedWidth(line))), ' ');
  return line;
}

std::string ends(const std::string& left, const std::string& right, int width) {
  return fitted(padded(left, width - inkedWidth(right)) + right, width);
}

/// How long a point stands: the pace of whoever measures, and what a cycle may be late.
Seconds coverOf(const std::vector<HistoryPoint>& points) {
  if (points.size() < 2) return shortestCover;
  const auto pace = (points.back().date - points.front().date) / double(points.size() - 1);
  return std::clamp(1.5 * pace, shortestCover, longestCover);
}

struct Scale {
  double top;
  std::string text;
};

Scale scaleOf(Metric metric, const SystemSnapshot& now, double peak) {
  const auto peakText = localized("peak {value}", {{"value", formatMetric(metric, peak)}});
  switch (metric) {
  case Metric::cpu:
    return {100, peakText};
  case Metric::memory:
    return {std::max(1.0, double(now.memory.total)),
            localized("of {total}", {{"total", Format::memory(double(now.memory.total))}})};
  default:
    return {std::max(peak, smallRate), peakText};
  }
}

/// A title and `rows` lines, each `width` columns.
std::vector<std::string> graph(const Terminal& terminal, Metric metric,
                               const std::vector<HistoryPoint>& points, const SystemSnapshot& now, int width,
                               int rows) {
  const auto summary = summaryOf(points);
  const auto scale = scaleOf(metric, now, summary ? summary->maximum : 0);
  const auto value = points.empty() ? noFigure : formatMetric(metric, points.back().value);
  const auto scaleText = points.empty() ? std::string() : terminal.ink(Ink::dim, scale.text);
  const auto cover = coverOf(points);
  const ChartSpan span{now.date - Model::liveSpan, now.date + cover, cover};
  auto fractions = chartColumns(points, span, width);
  for (auto& fraction : fractions)
    if (fraction) *fraction = std::clamp(*fraction / scale.top, 0.0, 1.0);
  std::vector<std::string> lines = {
      ends(terminal.ink(Ink::bold, title(metric)) + "  " + value, scaleText, width)};
  for (const auto& bars : chartBars(fractions, rows)) lines.push_back(terminal.ink(Ink::accent, bars));
  return lines;
}

std::string timeLine(const Terminal& terminal, int width) {
  const auto minutes = std::to_string(int(Model::liveSpan.count() / 60));
  return terminal.ink(Ink::dim, ends(localized("{n} min ago", {{"n", minutes}}), localized("now"), width));
}

} // namespace

std::vector<std::string> liveGraphs(const Terminal& terminal, const LiveSeries& live,
                                    const SystemSnapshot& now, const KnownParts& known, int width,
                                    int height) {
  const auto grid = gridFor(width, height);
  if (grid.beside == 0) return {};
  const int cell = (width + gap) / grid.beside - gap;
  const std::vector<HistoryPoint> none;
  std::vector<std::string> lines;
  const auto addBeside = [&](const std::vector<std::string>& more, std::size_t first, bool leftmost) {
    for (std::size_t i = 0; i < more.size(); ++i) {
      if (leftmost)
        lines.push_back(more[i]);
      else
        lines[first + i] += std::string(gap, ' ') + more[i];
    }
  };
  for (int band = 0; band < grid.bands(); ++band) {
    const auto first = lines.size();
    for (int i = 0; i < grid.beside; ++i) {
      const auto& [metric, part] = graphs[band * grid.beside + i];
      const auto found = live.find(metric);
      // The points of what is not read are zeros.
      const auto& points = found == live.end() || !known.has(part) ? none : found->second;
      addBeside(graph(terminal, metric, points, now, cell, grid.rows), first, i == 0);
    }
  }
  const auto first = lines.size();
  for (int i = 0; i < grid.beside; ++i) addBeside({timeLine(terminal, cell)}, first, i == 0);
  return lines;
}

} // namespace korvell
