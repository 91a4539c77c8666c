#pragma once
// Why a process counts to its application, in words: what `korvell top --why` and the window tell.

#include "Core/Machine/ProcessSampler.h"

#include <string>
#include <utility>
#include <vector>

namespace korvell {

/// Labels and what stands behind them, control characters escaped; "–" for what is not known.
std::vector<std::pair<std::string, std::string>> ownerLines(ProcessID pid,
                                                            const ProcessSampler::Identity& process);

} // namespace korvell
