#pragma once
// One measure on a tile: its figure, what stands beside it, and its last five minutes.

#include "App/Model.h"
#include "UI/Kit/ChartData.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Icon.h"
#include "UI/Kit/Token.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct Tile {
  SidebarItem section = SidebarItem::cpu;
  Icon icon = Icon::cpu;
  Token line = Token::cpu;
  std::string title;
  std::string lead; ///< an arrow that says which way; empty without one
  Figure figure;
  std::string caption;      ///< below the figure
  std::string shortCaption; ///< beside the title, where a tile has two lines
  std::vector<std::optional<double>>
      values;         ///< the last five minutes, oldest first; absent where not measured
  double top = 100;   ///< of the picture's scale
  std::string reason; ///< why the figure is "–"; empty where it is none
  std::string name;   ///< "CPU, 24 percent, steady over 5 minutes"

  bool operator==(const Tile&) const = default;
};

/// The six measures in order.
std::vector<Tile> measureTiles(const Model& model);

/// On which scale the measure's pictures and chart stand.
ValueScale scaleOf(Metric metric);

} // namespace korvell
