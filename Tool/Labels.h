#pragma once
// The bold words that lines about the machine begin with.

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/Machine/Models.h"

#include <algorithm>

namespace korvell {

/// The columns of the widest one, in the language in effect, and those behind it.
inline int labelWidth() {
  constexpr int usual = 9;
  int widest = 0;
  for (const auto& metric : allCases<Metric>()) widest = std::max(widest, displayWidth(title(metric.value)));
  for (const auto* label : {"Health", "Battery", "Power", "Volumes"})
    widest = std::max(widest, displayWidth(localized(label)));
  return std::max(usual, widest + 1);
}

} // namespace korvell
