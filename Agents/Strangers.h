#pragma once
// Texts that strangers chose (names of processes, projects and files) on their way to a program that reads
// language: data, and nothing else.

#include "Base/Value.h"

#include <string>
#include <string_view>

namespace korvell {

/// The most characters that a text keeps; sentences of ours with a name in them fit.
inline constexpr std::size_t longestStrangerText = 400;

/// On one line, without characters that nobody sees: controls, marks of direction, zero-width and tag
/// characters, separators of lines; bytes that are no UTF-8 become U+FFFD. What is cut ends in "…".
std::string cleanedText(std::string_view text, std::size_t most = longestStrangerText);
/// The same of every text in a value; the names of members are ours. Numbers are rounded to hundredths, small
/// ones to ten thousandths.
Value cleanedValue(Value value);

} // namespace korvell
