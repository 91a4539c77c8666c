#pragma once
// The menu bar's item as plain values: a symbol, a text or a drawing, which a view only has to paint.

#include "App/MenuBarState.h"
#include "Core/Health/HealthReport.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// In points; the origin is at the lower left.
struct Rectangle {
  double x = 0, y = 0, width = 0, height = 0;
  bool operator==(const Rectangle&) const = default;
};

struct DrawingCommand {
  enum class Kind { fill, strokeRounded };
  Kind kind = Kind::fill;
  Rectangle rectangle;
  double cornerRadius = 0; ///< of a stroke, whose line is one point wide and centred on the edge
  bool operator==(const DrawingCommand&) const = default;
};

/// A template image: its black is painted in the bar's own ink.
struct Drawing {
  double width = 0, height = 0;
  std::vector<DrawingCommand> commands; ///< in the order of painting
  bool operator==(const Drawing&) const = default;
};

struct MenuBarGraph {
  /// `cpu` in percent, oldest first, a bar each from the left edge; `memory` is a share of 1.
  static Drawing image(const std::vector<double>& cpu, double memory);
};

/// What the styles show, as MenuBarState publishes it for the chosen one.
struct MenuBarFigures {
  int score = 0, cpu = 0, memory = 0;
  std::vector<double> cpuHistory; ///< percent, oldest first

  /// Without a history.
  static MenuBarFigures of(const SystemSnapshot& snapshot, const HealthReport& report);
};

struct MenuBarLabel {
  enum class Symbol { heart, filledHeart }; ///< a filled heart asks for attention
  static constexpr int attentionBelow = 75; ///< scores

  std::optional<Symbol> symbol;
  std::optional<std::string> text; ///< digits all of one width
  std::optional<Drawing> drawing;

  static MenuBarLabel make(const MenuBarFigures& figures, MenuBarStyle style);
  static MenuBarLabel make(const MenuBarState& state, MenuBarStyle style);
  bool operator==(const MenuBarLabel&) const = default;
};

template <>
struct EnumTable<MenuBarLabel::Symbol> {
  using enum MenuBarLabel::Symbol;
  /// The raw values are the names of the macOS system symbols.
  static constexpr EnumCase<MenuBarLabel::Symbol> cases[] = {{heart, "heart", "Heart"},
                                                             {filledHeart, "heart.fill", "Filled heart"}};
};

} // namespace korvell
