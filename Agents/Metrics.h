#pragma once
// The families of metrics. docs/metrics.md lists them.
//
// Labels are bounded: applications, models and volumes by their names, the largest of them and "other" for
// the rest together; never a process id.

#include "Agents/MetricsReading.h"
#include "Agents/MetricsText.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace korvell {

/// Applications that have series of their own; volumes and models are bounded alike.
inline constexpr std::size_t mostLabelled = 20;

std::string metricsText(const MetricsReading& reading, MetricsFormat format, std::string_view version);

} // namespace korvell
