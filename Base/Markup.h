#pragma once
// Texts for readers of markup: Pango's in status bars, the one of desktop notifications.

#include <string>
#include <string_view>

namespace korvell {

/// The text with what would be markup written as text.
std::string escapedMarkup(std::string_view text);

} // namespace korvell
