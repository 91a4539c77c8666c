#pragma once
// A measurement for a command that runs once.

#include "Core/Loop/Tick.h"
#include "Tool/Command.h"

namespace korvell {

/// Two cycles of the sampling loop a second apart: the second one has rates. Takes that second.
Tick measure(Context& context);

} // namespace korvell
