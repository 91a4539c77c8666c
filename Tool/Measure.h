#pragma once
// A measurement for a command that runs once.

#include "Core/Loop/Sampler.h"
#include "Tool/Command.h"

namespace korvell {

/// The sampling loop with everything that this host has to measure.
std::unique_ptr<Sampler> makeSampler(Context& context);

/// Two cycles of the sampling loop a second apart: the second one has rates. Takes that second.
Tick measure(Context& context);

} // namespace korvell
