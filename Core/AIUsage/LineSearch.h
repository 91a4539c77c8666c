#pragma once
// Searching raw log bytes, sixteen at a time.
//
// Nearly all bytes of a log belong to lines that do not matter, so the whole block is searched for the byte
// string that makes a line matter, and lines are cut out only around a hit. Two bytes of the string, the
// first anchors, are compared at every position; where both agree the third is, and then the whole string.
// Anchors that rarely meet in JSON keep such confirmations rare.

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvell {

struct Needle {
  std::string_view text;
  std::size_t first = 0, second = 1, third = 1; ///< where in the text the anchors are

  constexpr Needle(std::string_view text) : text(text) {}
  constexpr Needle(std::string_view text, std::size_t first, std::size_t second, std::size_t third)
      : text(text), first(first), second(second), third(third) {}
};

// A quote inside a text is written with a backslash before it, so a quote behind a letter, and a colon before
// a quote, belong to the line's own members.
inline constexpr Needle usageNeedle{"\"usage\":{", 1, 6, 8};
inline constexpr Needle assistantNeedle{"\"type\":\"assistant\"", 7, 8, 6};
inline constexpr Needle messageIDNeedle{"\"id\":\"msg_", 9, 6, 4};
inline constexpr Needle requestIDNeedle{"\"requestId\":\"", 8, 9, 10};
inline constexpr Needle tokenCountNeedle{"\"type\":\"token_count\"", 13, 12, 14};
inline constexpr Needle turnContextNeedle{"\"type\":\"turn_context\"", 12, 11, 13};
/// How the two needles of Codex lines begin.
inline constexpr Needle codexNeedle{"\"type\":\"t", 7, 8, 6};

/// The offset of the first occurrence. A needle shorter than two bytes is found nowhere.
std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range);

inline bool contains(std::string_view range, const Needle& needle) {
  return findWithSIMD(needle, range).has_value();
}

/// The offset of the last line feed.
std::optional<std::size_t> lastLineFeed(std::string_view range);

} // namespace korvell
