#pragma once
// Searching raw log bytes, sixteen at a time.
//
// Nearly all bytes of a log belong to lines that do not matter, so the whole block is searched for the byte
// string that makes a line matter, and lines are cut out only around a hit. Two bytes of the string, the
// anchors, are compared at every position; where both agree the whole string is. Anchors that are rare in
// JSON keep such confirmations rare.

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvell {

struct Needle {
  std::string_view text;
  std::size_t first = 0, second = 1; ///< where in the text the anchors are, ascending

  constexpr Needle(std::string_view text, std::size_t first = 0, std::size_t second = 1)
      : text(text), first(first), second(second) {}
};

inline constexpr Needle usageNeedle{"\"usage\":{", 4, 8};
inline constexpr Needle assistantNeedle{"\"type\":\"assistant\"", 8, 17};
inline constexpr Needle messageIDNeedle{"\"id\":\"msg_", 6, 9};
inline constexpr Needle requestIDNeedle{"\"requestId\":\"", 4, 8};
inline constexpr Needle tokenCountNeedle{"\"type\":\"token_count\"", 13, 14};
inline constexpr Needle turnContextNeedle{"\"type\":\"turn_context\"", 12, 13};
/// What the two needles of Codex lines have in common.
inline constexpr Needle codexNeedle{"n_co", 1, 2};

/// The offset of the first occurrence. A needle shorter than two bytes is found nowhere.
std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range);

inline bool contains(std::string_view range, const Needle& needle) {
  return findWithSIMD(needle, range).has_value();
}

/// The offset of the last line feed.
std::optional<std::size_t> lastLineFeed(std::string_view range);

} // namespace korvell
