#include "Core/AIUsage/LineSearch.h"

#include <algorithm>
#include <cstring>

namespace korvell {

namespace {

constexpr std::size_t stride = 128;

struct Anchors {
  const char *atRare, *atSecond; ///< at position 0
  char rare, second;

  Anchors(const Needle& needle, const char* bytes)
      : atRare(bytes + needle.rare), atSecond(bytes + needle.second), rare(needle.text[needle.rare]),
        second(needle.text[needle.second]) {}
};

/// The first stride from `at` on in which both anchors agree at a position; else where whole strides end.
// A plain loop over bytes, without a branch: compilers turn it into the widest vectors that they may use.
[[gnu::always_inline]] inline std::size_t nextStride(Anchors anchors, std::size_t at, std::size_t positions) {
  for (; at + stride <= positions; at += stride) {
    const char* const rare = anchors.atRare + at;
    const char* const second = anchors.atSecond + at;
    unsigned char agree = 0;
    for (std::size_t i = 0; i < stride; ++i)
      agree |= static_cast<unsigned char>((rare[i] == anchors.rare) & (second[i] == anchors.second));
    if (agree) break;
  }
  return at;
}

using NextStride = std::size_t (*)(Anchors, std::size_t, std::size_t);

std::size_t nextStrideAnywhere(Anchors anchors, std::size_t at, std::size_t positions) {
  return nextStride(anchors, at, positions);
}

#if defined(__x86_64__)
// Twice as wide as what every such processor has.
[[gnu::target("avx2")]] std::size_t nextStrideAVX2(Anchors anchors, std::size_t at, std::size_t positions) {
  return nextStride(anchors, at, positions);
}
const NextStride widestNextStride = __builtin_cpu_supports("avx2") ? nextStrideAVX2 : nextStrideAnywhere;
#else
constexpr NextStride widestNextStride = nextStrideAnywhere;
#endif

/// The first of the positions from `at` to `end` at which the whole needle stands.
std::optional<std::size_t> confirm(const Needle& needle, const char* bytes, std::size_t at, std::size_t end) {
  const char rare = needle.text[needle.rare];
  const char* const last = bytes + end + needle.rare;
  for (const char* next = bytes + at + needle.rare; next < last; ++next) {
    next = static_cast<const char*>(std::memchr(next, rare, std::size_t(last - next)));
    if (!next) break;
    const char* const begin = next - needle.rare;
    if (begin[needle.second] == needle.text[needle.second] &&
        std::memcmp(begin, needle.text.data(), needle.text.size()) == 0)
      return std::size_t(begin - bytes);
  }
  return std::nullopt;
}

} // namespace

std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range) {
  if (needle.text.size() < 2 || range.size() < needle.text.size()) return std::nullopt;
  const std::size_t positions = range.size() - needle.text.size() + 1;
  const Anchors anchors(needle, range.data());
  for (std::size_t at = 0; at < positions;) {
    at = widestNextStride(anchors, at, positions);
    const std::size_t end = std::min(at + stride, positions);
    if (const auto found = confirm(needle, range.data(), at, end)) return found;
    at = end;
  }
  return std::nullopt;
}

std::optional<std::size_t> lastLineFeed(std::string_view range) {
#if defined(__GLIBC__)
  const void* const last = memrchr(range.data(), '\n', range.size());
  return last ? std::optional(std::size_t(static_cast<const char*>(last) - range.data())) : std::nullopt;
#else
  const auto last = range.rfind('\n');
  return last == std::string_view::npos ? std::nullopt : std::optional(last);
#endif
}

} // namespace korvell
