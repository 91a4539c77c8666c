#pragma once
// What a person does to another program's window, on an X server without a window manager.

#include <cstdint>

namespace korvell {

/// Asks a window to close, as its frame's button does.
void closeWindow(std::uint32_t window);

/// Keys by their codes on a PC's keyboard.
enum class Key : std::uint8_t { r = 27, f6 = 72, right = 114, end = 115 };

/// Presses and lets go of a key, with Control held where it is asked for.
void pressKey(std::uint32_t window, Key key, bool withControl = false);

} // namespace korvell
