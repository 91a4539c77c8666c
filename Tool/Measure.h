#pragma once
// A measurement for a command that runs once.

#include "App/Measurement.h"
#include "Core/Loop/Tick.h"
#include "Tool/Command.h"

namespace korvell {

/// Two cycles of the sampling loop a second apart: the second one has rates. Takes that second.
Tick measure(Context& context);

/// The keeper's last measurement; without a keeper one of our own, whose report knows no ten minutes.
Measurement currentMeasurement(Context& context);

} // namespace korvell
