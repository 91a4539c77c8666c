#pragma once
// What a mistyped word was meant to be.

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvell {

/// The candidate that takes the fewest letters added, left out, exchanged or swapped to become the word,
/// whatever the case, or that the word begins; nothing when none is close.
std::optional<std::string> nearestWord(std::string_view word, std::span<const std::string> candidates);

} // namespace korvell
