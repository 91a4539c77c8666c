#pragma once
// Sentences on a terminal that is narrower than they are.

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The words of a text in lines of at most `columns` terminal columns; a word that is wider stands alone.
std::vector<std::string> wrapped(std::string_view text, int columns);

} // namespace korvell
