#include "App/StatusBar.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Base/Markup.h"
#include "Base/Text.h"
#include "Base/Value.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double tallestBar = 14, tallestLevel = 13; ///< of the drawing, in points

/// How a bar may set a score apart.
struct Grade {
  int from;
  std::string_view name, color; ///< the colour is empty for the bar's own
};
constexpr Grade grades[] = {{75, "good", ""}, {50, "fair", "#F0B252"}, {0, "poor", "#FF8577"}};

const Grade& gradeOf(int score) {
  const auto* grade = std::ranges::find_if(grades, [score](const Grade& row) { return score >= row.from; });
  return grade == std::end(grades) ? grades[std::size(grades) - 1] : *grade;
}

std::string_view eighths(double fraction) {
  constexpr std::string_view heights[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  return heights[std::clamp(int(std::lround(fraction * 8)) - 1, 0, 7)];
}

std::string drawingText(const Drawing& drawing) {
  std::string text;
  bool isGauge = false; // the gauge's frame parts the bars from its level
  for (const auto& command : drawing.commands)
    if (command.kind == DrawingCommand::Kind::fill) {
      text += eighths(command.rectangle.height / (isGauge ? tallestLevel : tallestBar));
    } else {
      text += " ";
      isGauge = true;
    }
  return text;
}

/// What stands behind the label: the score, each finding, the shares.
std::string details(const MenuBarFigures& figures, const HealthReport& report) {
  std::string text = localized("Health {score}: {label}",
                               {{"score", std::to_string(report.score)}, {"label", report.label()}});
  for (const auto& insight : report.insights) text += "\n" + escapedControls(insight.title);
  return text + "\n" +
         localized("CPU {cpu}%, memory {memory}%",
                   {{"cpu", std::to_string(figures.cpu)}, {"memory", std::to_string(figures.memory)}});
}

std::string waybarLine(const std::string& text, const MenuBarFigures& figures, const HealthReport& report) {
  const auto& grade = gradeOf(report.score);
  return dumpJSON(Value::object({{"text", escapedMarkup(text)},
                                 {"alt", grade.name},
                                 {"tooltip", escapedMarkup(details(figures, report))},
                                 {"class", grade.name},
                                 {"percentage", report.score}}));
}

Value block(const std::string& text, int score) {
  Value block = Value::object({{"name", "korvell"}, {"full_text", text}});
  const auto& grade = gradeOf(score);
  if (!grade.color.empty()) block.set("color", grade.color);
  return block;
}

std::string tmuxLine(const std::string& text, int score) {
  const auto color = gradeOf(score).color;
  if (color.empty()) return text;
  return "#[fg=" + std::string(color) + "]" + text + "#[default]";
}

} // namespace

std::string labelText(const MenuBarLabel& label) {
  std::string text;
  if (label.symbol) text = *label.symbol == MenuBarLabel::Symbol::heart ? "♡" : "♥";
  if (label.text) text += (text.empty() ? "" : " ") + *label.text;
  if (label.drawing) text += drawingText(*label.drawing);
  return text;
}

std::string_view statusBarOpening(StatusBarFormat format) {
  return format == StatusBarFormat::i3bar ? "{\"version\":1}\n[" : "";
}

std::string_view statusBarClosing(StatusBarFormat format) {
  return format == StatusBarFormat::i3bar ? "]" : "";
}

std::string statusBarLine(const MenuBarFigures& figures, const HealthReport& report, MenuBarStyle style,
                          StatusBarFormat format) {
  const auto text = labelText(MenuBarLabel::make(figures, style));
  switch (format) {
  case StatusBarFormat::plain:
    break;
  case StatusBarFormat::waybar:
    return waybarLine(text, figures, report);
  case StatusBarFormat::i3bar:
    return "[" + dumpJSON(block(text, report.score)) + "]";
  case StatusBarFormat::i3blocks:
    return dumpJSON(block(text, report.score));
  case StatusBarFormat::tmux:
    return tmuxLine(text, report.score);
  }
  return text;
}

} // namespace korvell
