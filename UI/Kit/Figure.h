#pragma once
// A figure as views set it: the number in the text's colour, its unit one step smaller behind it.

#include "Base/Localization.h"

#include <string>
#include <string_view>

namespace korvell {

struct Figure {
  std::string number; ///< "24", "3.5", "–"
  std::string unit;   ///< "%", "MB/s"; empty without one

  bool operator==(const Figure&) const = default;
};

/// What stands between a number and this unit where both are one text.
inline std::string_view gapBefore(std::string_view unit) {
  if (unit == "%") return currentLanguage().numbers.beforePercent;
  return unit.empty() ? "" : " ";
}

/// "24%", "3.5 MB/s", "–"
inline std::string textOf(const Figure& figure) {
  return std::string(figure.number).append(gapBefore(figure.unit)) + figure.unit;
}

} // namespace korvell
