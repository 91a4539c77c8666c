#include "Core/AIUsage/LineSearch.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace korvell {

namespace {

// The compilers' own vectors: SSE2 on x86-64, NEON on arm64, no intrinsics of either.
using Block = unsigned char __attribute__((vector_size(16)));
constexpr std::size_t lanes = sizeof(Block);
constexpr std::size_t stride = 4 * lanes;

Block load(const char* bytes) {
  Block block;
  std::memcpy(&block, bytes, lanes);
  return block;
}

Block every(char byte) { return Block{} + static_cast<unsigned char>(byte); }

struct Halves {
  std::uint64_t low, high;
};

Halves halves(Block mask) {
  Halves result;
  std::memcpy(&result, &mask, sizeof result);
  return result;
}

bool any(Block mask) {
  const auto [low, high] = halves(mask);
  return (low | high) != 0;
}

static_assert(std::endian::native == std::endian::little, "lane numbers are read off little-endian words");

/// Calls `accept` with each set lane in order until it answers true.
template <class Accept>
bool firstLane(Block mask, Accept&& accept) {
  const auto [low, high] = halves(mask);
  for (int half = 0; half < 2; ++half)
    for (std::uint64_t word = half ? high : low; word != 0;) {
      const int lane = std::countr_zero(word) / 8;
      if (accept(std::size_t(half * 8 + lane))) return true;
      word &= ~(std::uint64_t{0xff} << (lane * 8));
    }
  return false;
}

struct Anchors {
  Block first, second, third;
  const char *atFirst, *atSecond, *atThird;

  Anchors(const Needle& needle, const char* bytes)
      : first(every(needle.text[needle.first])), second(every(needle.text[needle.second])),
        third(every(needle.text[needle.third])), atFirst(bytes + needle.first),
        atSecond(bytes + needle.second), atThird(bytes + needle.third) {}
  Block two(std::size_t at) const {
    return Block((load(atFirst + at) == first) & (load(atSecond + at) == second));
  }
  Block three(std::size_t at) const { return Block(two(at) & (load(atThird + at) == third)); }
};

/// The first of `blocks` times sixteen positions at which the whole needle stands.
// Kept out of the loop that finds nothing, so that its registers are its own.
[[gnu::noinline]] std::optional<std::size_t> confirm(const Needle& needle, const Anchors& anchors,
                                                     const char* bytes, std::size_t at, int blocks) {
  std::size_t found = 0;
  for (; blocks > 0; --blocks, at += lanes) {
    const Block mask = anchors.three(at);
    if (any(mask) && firstLane(mask, [&](std::size_t lane) {
          found = at + lane;
          return std::memcmp(bytes + found, needle.text.data(), needle.text.size()) == 0;
        }))
      return found;
  }
  return std::nullopt;
}

} // namespace

std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range) {
  const std::string_view text = needle.text;
  if (text.size() < 2 || range.size() < text.size()) return std::nullopt;
  const char* const bytes = range.data();
  const std::size_t positions = range.size() - text.size() + 1;
  const Anchors anchors(needle, bytes);
  std::size_t at = 0;
  for (; at + stride <= positions; at += stride)
    if (any(anchors.two(at) | anchors.two(at + lanes) | anchors.two(at + 2 * lanes) |
            anchors.two(at + 3 * lanes)))
      if (const auto found = confirm(needle, anchors, bytes, at, 4)) return found;
  for (; at + lanes <= positions; at += lanes)
    if (const auto found = confirm(needle, anchors, bytes, at, 1)) return found;
  for (; at < positions; ++at)
    if (std::memcmp(bytes + at, text.data(), text.size()) == 0) return at;
  return std::nullopt;
}

std::optional<std::size_t> lastLineFeed(std::string_view range) {
  const Block lineFeed = every('\n');
  std::size_t end = range.size();
  for (; end >= stride; end -= stride) {
    const char* const block = range.data() + end - stride;
    const auto mask = [&](std::size_t i) { return Block(load(block + i * lanes) == lineFeed); };
    if (any(mask(0) | mask(1) | mask(2) | mask(3))) break;
  }
  const std::size_t at = range.substr(0, end).rfind('\n');
  return at == std::string_view::npos ? std::nullopt : std::optional(at);
}

} // namespace korvell
