#pragma once
// The last minutes of CPU, memory, disk and network as graphs, in whatever space a screen has left.

#include "App/Model.h"
#include "Tool/Terminal.h"

#include <string>
#include <vector>

namespace korvell {

/// Four graphs in a grid that suits the space; at most `width` columns and `height` lines. CPU and memory are
/// drawn to their whole, disk and network to their peak. What is not known now is "–" and has no graph.
/// Nothing where the space is too small.
std::vector<std::string> liveGraphs(const Terminal& terminal, const LiveSeries& live,
                                    const SystemSnapshot& now, const KnownParts& known, int width,
                                    int height);

} // namespace korvell
