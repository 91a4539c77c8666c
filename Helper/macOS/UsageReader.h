#pragma once
// One process's usage as the kernel counts it.

#include "Helper/Shared/RusageSample.h"

#include <optional>

namespace korvell {

/// Nothing when the process is gone or may not be read. From any thread.
std::optional<RusageSample> readUsage(ProcessID pid);

} // namespace korvell
