#pragma once
// What a desktop without a tray needs, so that Korvell's mark finds a place.

#include <string>
#include <string_view>

namespace korvell {

/// A sentence for the desktop of that name (XDG_CURRENT_DESKTOP: names between colons); one for any other
/// desktop.
std::string trayHelp(std::string_view desktop);

} // namespace korvell
