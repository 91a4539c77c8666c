#pragma once
// Times as people type them.

#include "Base/LocalTime.h"

#include <optional>
#include <string_view>

namespace korvell {

/// "14:32" is the last time that clocks showed it, "2026-03-01 14:32" that day's, both in the zone; RFC 3339
/// is taken as it is. Nothing for anything else.
std::optional<Date> parseTimeArgument(std::string_view text, const TimeZone& zone, Date now);

} // namespace korvell
