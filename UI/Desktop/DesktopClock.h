#pragma once
// How the desktop writes the time of day: LC_TIME on Linux, the region's settings on macOS.

#include "Base/LocalTime.h"

namespace korvell {

HourCycle desktopHourCycle();

} // namespace korvell
