#pragma once
// The contrasts that the interface promises: every ink on every ground that it may stand on. Text keeps 4.5,
// marks, lines and outlines that carry meaning keep 3, both by WCAG 2.

#include "UI/Kit/Theme.h"

#include <string_view>
#include <vector>

namespace korvell {

struct ContrastDemand {
  Token ink;
  Token ground;
  double least;
};
const std::vector<ContrastDemand>& contrastDemands();

/// As the sources write it: "text1".
std::string_view nameOf(Token token);

} // namespace korvell
