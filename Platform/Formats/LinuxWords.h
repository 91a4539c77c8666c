#pragma once
// The words that differ on Linux. The keys are the texts as the code has them, written for a Mac.

#include "Base/Localization.h"

#include <span>

namespace korvell {

std::span<const LocalizedText> linuxWords();

} // namespace korvell
