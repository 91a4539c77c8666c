#pragma once
// One measurement of the machine as lines for a terminal: what `status` prints once and `watch` repeats.

#include "Core/Machine/Models.h"
#include "Platform/KnownParts.h"
#include "Sensors/SensorsSnapshot.h"
#include "Tool/Terminal.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// At most `width` columns each. Figures that are not known are "–"; temperatures stand only where there are
/// some.
std::vector<std::string> summaryLines(const Terminal& terminal, const SystemSnapshot& snapshot,
                                      const KnownParts& known, int width,
                                      const std::optional<SensorsSnapshot>& sensors = std::nullopt);

/// The ink of a share of 100: plain, warning from 70, critical from 90.
Ink inkForPercent(double percent);

} // namespace korvell
