#pragma once
// A figure as views set it: the number in the text's colour, its unit one step smaller behind it.

#include <string>

namespace korvell {

struct Figure {
  std::string number; ///< "24", "3.5", "–"
  std::string unit;   ///< "%", "MB/s"; empty without one

  bool operator==(const Figure&) const = default;
};

} // namespace korvell
