#pragma once
// Searching raw log bytes as fast as they are read.
//
// Nearly all bytes of a log belong to lines that do not matter, so the whole block is searched for the byte
// string that makes a line matter, and lines are cut out only around a hit. Two bytes of the string, its
// anchors, are compared at every position of a stride at once; only where both agree the whole string is.
// Anchors that are rare, and rarely meet, in JSON and in program text keep that seldom.

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvell {

struct Needle {
  std::string_view text;
  std::size_t rare = 0, second = 1; ///< where in the text the anchors are

  constexpr Needle(std::string_view text) : text(text) {}
  constexpr Needle(std::string_view text, char rare, char second)
      : text(text), rare(text.find(rare)), second(text.rfind(second)) {}
};

inline constexpr Needle usageNeedle{"\"usage\":{", 'g', ':'};
inline constexpr Needle assistantNeedle{"\"type\":\"assistant\"", 'y', ':'};
inline constexpr Needle messageIDNeedle{"\"id\":\"msg_", 'g', ':'};
inline constexpr Needle requestIDNeedle{"\"requestId\":\"", 'q', 'I'};
inline constexpr Needle tokenCountNeedle{"\"type\":\"token_count\"", 'k', '_'};
inline constexpr Needle turnContextNeedle{"\"type\":\"turn_context\"", 'x', '_'};
/// How the two needles of Codex lines begin.
inline constexpr Needle codexNeedle{"\"type\":\"t", 'y', 't'};

/// The offset of the first occurrence. A needle shorter than two bytes is found nowhere.
std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range);
/// With vectors of at most that many bytes, as a lesser processor does it.
std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range,
                                        std::size_t widestVector);

inline bool contains(std::string_view range, const Needle& needle) {
  return findWithSIMD(needle, range).has_value();
}

/// The offset of the last line feed.
std::optional<std::size_t> lastLineFeed(std::string_view range);

} // namespace korvell
