#pragma once
// The sound system of macOS: which processes play, where sound goes, and taps.

#include "Audio/TapSound.h"

namespace korvell {

std::unique_ptr<TapSystem> makeMacTapSystem();

} // namespace korvell
