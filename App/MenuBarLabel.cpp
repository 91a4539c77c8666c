#include "App/MenuBarLabel.h"

#include "Base/Format.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr double barStep = 2.2, barWidth = 1.6, barBottom = 1, barHeight = 14, shortestBar = 1;
constexpr Rectangle gauge{33.5, 1.5, 3.5, 13}; // 4.5 by 14 points at (33, 1), half a line's width inside
constexpr double gaugeRadius = 1.2;

} // namespace

Drawing MenuBarGraph::image(const std::vector<double>& cpu, double memory) {
  Drawing drawing{38, 16, {}};
  for (std::size_t i = 0; i < cpu.size(); ++i) {
    const double height = std::max(shortestBar, std::min(cpu[i], 100.0) / 100 * barHeight);
    drawing.commands.push_back(
        {DrawingCommand::Kind::fill, {double(i) * barStep, barBottom, barWidth, height}});
  }
  drawing.commands.push_back({DrawingCommand::Kind::strokeRounded, gauge, gaugeRadius});
  Rectangle level = gauge;
  level.height *= std::clamp(memory, 0.0, 1.0);
  drawing.commands.push_back({DrawingCommand::Kind::fill, level});
  return drawing;
}

MenuBarFigures MenuBarFigures::of(const SystemSnapshot& snapshot, const HealthReport& report) {
  return {report.score, int(snapshot.cpu.total), int(snapshot.memory.usedShare().value_or(0)), {}};
}

MenuBarLabel MenuBarLabel::make(const MenuBarState& state, MenuBarStyle style) {
  return make(MenuBarFigures{*state.score, *state.cpu, *state.memory, *state.cpuHistory}, style);
}

MenuBarLabel MenuBarLabel::make(const MenuBarFigures& figures, MenuBarStyle style) {
  switch (style) {
  case MenuBarStyle::icon:
    return {.symbol = figures.score < attentionBelow ? Symbol::filledHeart : Symbol::heart};
  case MenuBarStyle::score:
    return {.symbol = Symbol::heart, .text = std::to_string(figures.score)};
  case MenuBarStyle::cpuAndMemory:
    return {.text = Format::percent(figures.cpu) + " · " + Format::percent(figures.memory)};
  case MenuBarStyle::graphs:
    break;
  }
  return {.drawing = MenuBarGraph::image(figures.cpuHistory, figures.memory / 100.0)};
}

} // namespace korvell
