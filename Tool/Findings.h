#pragma once
// The health report as lines for a terminal: the score, then each finding with what it costs and its fix.

#include "Core/Health/HealthReport.h"
#include "Platform/KnownParts.h"
#include "Tool/Terminal.h"

#include <string>
#include <vector>

namespace korvell {

/// At most `width` columns each. A score is one "so far" until the processor's ten minutes are known, which
/// it can still lose points for.
std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report,
                                      const KnownParts& known, int width);

/// The same in at most `height` lines, but for two: whole where that is enough, else a line for each finding,
/// else the most severe and how many more there are.
std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report,
                                      const KnownParts& known, int width, int height);

} // namespace korvell
