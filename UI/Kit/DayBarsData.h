#pragma once
// What bars of days show, as plain values: each day one bar of up to two parts, one on top of the other.

#include "UI/Kit/Token.h"

#include <string>
#include <vector>

namespace korvell {

struct DayBar {
  struct Part {
    double amount = 0;
    std::string words; ///< "Claude Code 53.5M"
    bool operator==(const Part&) const = default;
  };
  std::string label;       ///< below it; empty for a day between two that are named
  std::vector<Part> parts; ///< from below, as many as there are series
  std::string total;       ///< "69.5M"
  std::string when;        ///< "Wed 18 Nov", in the readout
  std::string beside;      ///< "$42.84", at the readout's end
  std::string spoken;      ///< the readout in words

  bool operator==(const DayBar&) const = default;
};

struct DayBarsData {
  struct Tick {
    double value = 0;
    std::string label;
    bool operator==(const Tick&) const = default;
  };

  std::vector<std::string> series; ///< one or two
  std::vector<DayBar> bars;        ///< oldest first
  double top = 1;                  ///< of the scale
  std::vector<Tick> ticks;         ///< of the value axis; without any each bar has its total above
  Token token = Token::accent;
  std::string spoken; ///< the name for screen readers

  bool operator==(const DayBarsData&) const = default;
};

} // namespace korvell
