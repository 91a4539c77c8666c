#pragma once
// What the window system can do. Main thread only.

#include <string_view>

namespace korvell {

/// Whether a window may have rounded corners: without a compositing manager they would be black.
bool showsTranslucentWindows();

} // namespace korvell
