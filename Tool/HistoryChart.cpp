#include "Tool/HistoryChart.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int chartRows = 8;
constexpr int narrowest = 10;

std::string rightAligned(const std::string& text, int width) {
  return std::string(size_t(std::max(0, width - displayWidth(text))), ' ') + text;
}

/// The time of day within a day, else the day of the month.
std::string timeLabel(const TimeZone& zone, Date date, Seconds span) {
  const auto local = localTime(zone, date);
  if (span > Seconds{2 * 86'400}) return shownDayOfYear(local);
  return fmt::format("{:02}:{:02}", local.hour, local.minute);
}

/// Labels at both ends, in the middle and at the quarters, as far as there is room between them.
std::string timeAxis(const TimeZone& zone, const ChartSpan& span, int columns) {
  std::string line(size_t(columns), ' ');
  const Seconds length = span.end - span.begin;
  for (int quarter : {0, 4, 2, 1, 3}) {
    const auto label = timeLabel(zone, span.begin + length * quarter / 4, length);
    const int room = columns - int(label.size());
    const int left = std::clamp(columns * quarter / 4 - int(label.size()) / 2, 0, std::max(0, room));
    const auto from = size_t(std::max(0, left - 1));
    const bool isFree = line.find_first_not_of(' ', from) >= size_t(left) + label.size() + 1;
    if (room >= 0 && isFree) line.replace(size_t(left), label.size(), label);
  }
  return line;
}

/// One row of a column: full, empty, or the part of it that the value reaches into. A value of zero still
/// shows at the bottom: it is no gap.
std::string cell(std::optional<double> fraction, int rowFromBottom, int rows) {
  if (!fraction) return " ";
  const int eighths = std::max(1, int(std::lround(*fraction * rows * 8)));
  const int here = eighths - rowFromBottom * 8;
  if (here <= 0) return " ";
  return columnBar((std::min(here, 8) - 0.5) / 8);
}

} // namespace

std::optional<SeriesSummary> summaryOf(const std::vector<HistoryPoint>& points) {
  if (points.empty()) return std::nullopt;
  SeriesSummary summary{points[0].value, 0, points[0].value};
  for (const HistoryPoint& point : points) {
    summary.minimum = std::min(summary.minimum, point.value);
    summary.maximum = std::max(summary.maximum, point.value);
    summary.mean += point.value / double(points.size());
  }
  return summary;
}

std::vector<std::optional<double>> chartColumns(const std::vector<HistoryPoint>& points,
                                                const ChartSpan& span, int columns) {
  std::vector<double> sums(size_t(columns), 0.0);
  std::vector<double> weights(size_t(columns), 0.0);
  const double perColumn = (span.end - span.begin).count() / columns;
  for (const HistoryPoint& point : points) {
    const double from = std::max(0.0, (point.date - span.begin).count() / perColumn);
    const double to = std::min(double(columns), (point.date + span.cover - span.begin).count() / perColumn);
    for (int column = int(from); column < columns && double(column) < to; ++column) {
      const double share = std::min(to, column + 1.0) - std::max(from, double(column));
      sums[size_t(column)] += share * point.value;
      weights[size_t(column)] += share;
    }
  }
  std::vector<std::optional<double>> means(static_cast<size_t>(columns));
  for (size_t i = 0; i < means.size(); ++i)
    if (weights[i] > 0) means[i] = sums[i] / weights[i];
  return means;
}

std::vector<std::string> chartBars(const std::vector<std::optional<double>>& fractions, int rows) {
  std::vector<std::string> lines;
  for (int row = rows - 1; row >= 0; --row) {
    auto& line = lines.emplace_back();
    for (const auto& fraction : fractions) line += cell(fraction, row, rows);
  }
  return lines;
}

std::vector<std::string> chartLines(const Terminal& terminal, Metric metric,
                                    const std::vector<HistoryPoint>& points, const SeriesSummary& summary,
                                    const ChartSpan& span, const TimeZone& zone, int width) {
  const double highest = summaryOf(points)->maximum;
  const double top = highest > 0 ? highest : 1;
  const std::string topLabel = formatMetric(metric, top), middleLabel = formatMetric(metric, top / 2),
                    zeroLabel = formatMetric(metric, 0);
  const int labels = std::max({displayWidth(topLabel), displayWidth(middleLabel), displayWidth(zeroLabel)});
  const int columns = std::max(narrowest, width - labels - 2);
  auto fractions = chartColumns(points, span, columns);
  for (auto& fraction : fractions)
    if (fraction) *fraction /= top;

  std::vector<std::string> lines;
  for (const auto& drawn : chartBars(fractions, chartRows)) {
    const auto& label = lines.empty() ? topLabel : lines.size() == chartRows / 2 ? middleLabel : "";
    lines.push_back(terminal.ink(Ink::dim, rightAligned(label, labels) + (label == "" ? " │" : " ┤")) +
                    terminal.ink(Ink::accent, drawn));
  }
  std::string rule = rightAligned(zeroLabel, labels) + " └";
  for (int i = 0; i < columns; ++i) rule += "─";
  lines.push_back(terminal.ink(Ink::dim, rule));
  lines.push_back(std::string(size_t(labels) + 2, ' ') +
                  terminal.ink(Ink::dim, timeAxis(zone, span, columns)));
  lines.push_back(localized("minimum {minimum} · mean {mean} · maximum {maximum}",
                            {{"minimum", formatMetric(metric, summary.minimum)},
                             {"mean", formatMetric(metric, summary.mean)},
                             {"maximum", formatMetric(metric, summary.maximum)}}));
  return lines;
}

} // namespace korvell
