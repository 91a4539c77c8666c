#pragma once
// What the examinations of sources share.

#include "Platform/Diagnostics.h"

#include <functional>
#include <string>

namespace korvell {

/// What one reading costs: the median of a few, since the first finds nothing in the processor's caches.
/// Nothing is read and told without a clock.
std::optional<double> readingMicroseconds(const Clock* clock, const std::function<void()>& reading);

/// What opening a file and reading its first byte says about it.
SourceReport::State fileState(const std::string& path);

} // namespace korvell
