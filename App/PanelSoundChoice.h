#pragma once
// Whether the panel shows who makes a sound. Asked for in the settings: it keeps the sound server listened to
// while the panel is open.

#include "Platform/UserDefaults.h"

#include <string_view>

namespace korvell {

inline constexpr std::string_view panelSoundKey = "sound.inPanel";

inline bool showsSoundInPanel(const UserDefaults& defaults) { return defaults.boolean(panelSoundKey, false); }

} // namespace korvell
