#pragma once
// One process tap, with the private device that joins it to the output and runs the renderer.

#include "Audio/Taps/TapHardware.h"

#include <memory>
#include <span>

namespace korvell {

/// Null where the system refuses, or is older than macOS 14.4, before which taps are not to be relied on.
std::unique_ptr<Tap> makeMacTap(const SoundOutput& output, std::span<const SoundProcess> processes,
                                std::shared_ptr<TapRender> render);
bool hasMacTaps();

} // namespace korvell
