#pragma once
// Bytes compared side by side, 32 with AVX2 and 16 at a time elsewhere. A comparison leaves all bits of a
// lane set where it holds.
//
// Functions on lanes are always inlined, into one for every processor and one for those with AVX2, and the
// program picks the best that it may run. Loops over single bytes would do where compilers see vectors in
// them, which g++ 12 often does not.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace korvell {

using ByteLanes [[gnu::vector_size(32)]] = signed char;
inline constexpr std::size_t byteLanes = sizeof(ByteLanes);
/// Four lanes' worth of bits at a time.
using LaneWords = std::uint64_t[byteLanes / sizeof(std::uint64_t)];

// By reference: what a function hands over a vector in depends on the processor.
[[gnu::always_inline]] inline void load(ByteLanes& lanes, const char* bytes) {
  std::memcpy(&lanes, bytes, sizeof(lanes));
}

[[gnu::always_inline]] inline bool holdsAnywhere(const ByteLanes& lanes) {
  LaneWords words;
  std::memcpy(words, &lanes, sizeof(lanes));
  return (words[0] | words[1] | words[2] | words[3]) != 0;
}

} // namespace korvell
