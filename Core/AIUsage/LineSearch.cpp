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

} // namespace

std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range) {
  const std::string_view text = needle.text;
  if (text.size() < 2 || range.size() < text.size()) return std::nullopt;
  const char* const bytes = range.data();
  const std::size_t positions = range.size() - text.size() + 1;
  const Block first = every(text[needle.first]), second = every(text[needle.second]);
  const char* const atFirst = bytes + needle.first;
  const char* const atSecond = bytes + needle.second;
  const auto matches = [&](std::size_t at) {
    return Block((load(atFirst + at) == first) & (load(atSecond + at) == second));
  };
  std::size_t found = 0;
  const auto confirm = [&](Block mask, std::size_t at) {
    return firstLane(mask, [&](std::size_t lane) {
      found = at + lane;
      return std::memcmp(bytes + found, text.data(), text.size()) == 0;
    });
  };

  std::size_t at = 0;
  for (; at + stride <= positions; at += stride) {
    const Block masks[] = {matches(at), matches(at + lanes), matches(at + 2 * lanes),
                           matches(at + 3 * lanes)};
    if (!any(masks[0] | masks[1] | masks[2] | masks[3])) continue;
    for (std::size_t i = 0; i < 4; ++i)
      if (confirm(masks[i], at + i * lanes)) return found;
  }
  for (; at + lanes <= positions; at += lanes)
    if (confirm(matches(at), at)) return found;
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
