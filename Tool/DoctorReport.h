#pragma once
// korvell doctor --report: gathers a support report and writes it into a file of its own.

#include "Platform/Diagnostics.h"
#include "Tool/Command.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// What Korvell itself costs.
struct OwnCost {
  double cycleMicroseconds = 0; ///< of CPU
  std::uint64_t resident = 0;
};

std::string supportReport(Context& context, const std::vector<SourceReport>& sources, const OwnCost& cost);

/// Writes to `file`, "-" for the output; without one to "korvell-report-DAY.txt" in the downloads or, where
/// there are none, in the current folder. A file that is there stays. Returns the exit code.
int writeSupportReport(Context& context, std::string_view text, const std::optional<std::string>& file);

} // namespace korvell
