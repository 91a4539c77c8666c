#pragma once
// What the texts of the storage clean-up say on Linux, where they name other folders than on macOS.

#include "Base/Localization.h"

#include <span>

namespace korvell {

std::span<const LocalizedText> linuxStorageWords();

} // namespace korvell
