#pragma once
// What the widget shows, from the document that it found: plain values without a toolkit.

#include "Base/Enum.h"
#include "Base/LocalTime.h"
#include "Shared/WidgetSnapshot.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Token.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

enum class WidgetSize { large, medium, small };

template <>
struct EnumTable<WidgetSize> {
  using enum WidgetSize;
  static constexpr EnumCase<WidgetSize> cases[] = {
      {large, "large", "Large"}, {medium, "medium", "Medium"}, {small, "small", "Small"}};
};

/// What the widget knows beside the document.
struct WidgetMoment {
  Date now;
  const TimeZone& zone;
  bool isMeasured = true; ///< somebody measures: the document will be written again
};

struct WidgetPage {
  enum class State {
    waiting, ///< for the first document
    shown,
    stopped, ///< nobody measures: no figure of the document holds any more
  };
  struct Fix {
    std::string title, detail;
    bool critical = false;
    std::string link; ///< of the section that it opens

    bool operator==(const Fix&) const = default;
  };
  struct Tile {
    std::string title;
    std::string lead; ///< before the figure: an arrow
    Figure figure;
    std::string detail;
    Token line = Token::cpu;
    std::vector<double> points;
    double top = 1; ///< of the chart's scale
    std::string link;
    std::string spoken;

    bool operator==(const Tile&) const = default;
  };
  struct App {
    std::string name;
    std::string id; ///< by which its stand-in picture is chosen
    std::string memory;
    double fraction = 0;

    bool operator==(const App&) const = default;
  };

  State state = State::waiting;
  std::optional<int> score;
  std::string label;  ///< the score in a word, or that it is being measured
  std::string asOf;   ///< "As of 14:58" for what is old; empty otherwise
  std::string spoken; ///< the score as a sentence
  std::vector<Fix> fixes;
  std::vector<Tile> tiles;
  std::vector<App> apps;
  std::string overviewLink, memoryLink;

  bool operator==(const WidgetPage&) const = default;
};

/// Without a document nothing is known yet.
WidgetPage widgetPage(const std::optional<WidgetSnapshot>& document, const WidgetMoment& moment);

/// Older documents are marked as old.
inline constexpr Seconds widgetPatience{300};
/// A document of the future was written before the clock was set back.
bool isOld(const WidgetSnapshot& document, Date now);

/// "↓ 1.8 MB/s" as an arrow, a number and its unit.
struct LedFigure {
  std::string lead;
  Figure figure;
  bool operator==(const LedFigure&) const = default;
};
LedFigure ledFigure(std::string_view text);

} // namespace korvell
