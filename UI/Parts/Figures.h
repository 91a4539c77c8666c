#pragma once
// Formatted figures as views set them: number and unit apart, and "–" for what could not be read.

#include "Base/Format.h"
#include "Base/LocalTime.h"
#include "UI/Kit/Figure.h"

#include <optional>
#include <string_view>

namespace korvell {

/// "3.5 MB/s", "24%" and "–" of Base/Format.h, divided at the end of the number.
Figure figureOf(std::string_view formatted);
Figure figureOf(Unit unit, std::optional<double> value);

/// "Today", "Yesterday", "Friday" within a week, "2026-11-02" before; of the future the date.
std::string dayWords(const TimeZone& zone, Date date, Date now);
/// "Today, 13:58", "Yesterday, 13:58", "Friday, 13:58" within a week, "2026-11-02, 13:58" before.
std::string dayAndTime(const TimeZone& zone, Date date, Date now);

/// The words for one and for many, the latter with "{n}".
std::string counted(std::int64_t count, std::string_view one, std::string_view many);

} // namespace korvell
