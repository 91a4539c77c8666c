#pragma once
// The health of the computer on a card that can be shown to others, as plain values. Names no person,
// machine, project, application or volume.

#include "App/Model.h"
#include "Base/LocalTime.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Token.h"
#include "UI/Kit/Tone.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct ShareCard {
  static constexpr std::size_t mostFindings = 3, mostFigures = 4;

  struct Share {
    double points = 0;
    Tone tone = Tone::info;
    bool operator==(const Share&) const = default;
  };
  struct Finding {
    Tone tone = Tone::info;
    int penalty = 0;
    std::string title;
    bool operator==(const Finding&) const = default;
  };
  struct Tile {
    std::string title;
    Figure figure;
    Token line = Token::cpu;
    std::vector<std::optional<double>> values{}; ///< the last five minutes, against `top`
    double top = 100;
    std::optional<double> level{}; ///< 0 to 1, instead of values
    bool operator==(const Tile&) const = default;
  };

  int score = 0;
  std::string label, title, loss;
  std::vector<Share> lost; ///< of all findings
  std::vector<Finding> findings;
  std::string more;        ///< "2 more"; empty where all are shown
  std::string reassurance; ///< where there is none
  std::vector<Tile> tiles; ///< only what is known
  std::string date;        ///< "19 November 2026"
  std::string fileName;    ///< without its ending

  bool operator==(const ShareCard&) const = default;
};

/// Nothing before the first report.
std::optional<ShareCard> shareCard(const Model& model, const TimeZone& zone);

} // namespace korvell
