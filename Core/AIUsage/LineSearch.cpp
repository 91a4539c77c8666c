#include "Core/AIUsage/LineSearch.h"

#include "Core/AIUsage/ByteLanes.h"

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace korvell {

namespace {

constexpr std::size_t nowhere = std::string_view::npos;

/// Compares the ends first, which is all that most places need.
[[gnu::always_inline]] inline bool standsAt(const char* at, std::string_view text) {
  return at[0] == text.front() && at[text.size() - 1] == text.back() &&
         std::memcmp(at, text.data(), text.size()) == 0;
}

class Search {
public:
  [[gnu::always_inline]] Search(const Needle& needle, const char* bytes)
      : bytes_(bytes), atRare_(bytes + needle.rare), atSecond_(bytes + needle.second),
        rare_(static_cast<signed char>(needle.text[needle.rare])),
        second_(static_cast<signed char>(needle.text[needle.second])), text_(needle.text) {}

  /// The first of that many positions, a group of lanes at least, at which the whole needle stands.
  [[gnu::always_inline]] std::size_t first(std::size_t positions) const {
    std::size_t at = 0;
    for (; at + stride <= positions; at += stride) {
      ByteLanes agree[groups], any{};
      for (std::size_t group = 0; group < groups; ++group) {
        compare(agree[group], at + group * byteLanes);
        any |= agree[group];
      }
      if (!holdsAnywhere(any)) continue;
      for (std::size_t group = 0; group < groups; ++group)
        if (const auto found = confirmed(agree[group], at + group * byteLanes); found != nowhere)
          return found;
    }
    for (; at < positions; at += byteLanes) {
      const auto begin = std::min(at, positions - byteLanes); // the last group may overlap the one before
      ByteLanes agree;
      compare(agree, begin);
      if (const auto found = confirmed(agree, begin); found != nowhere) return found;
    }
    return nowhere;
  }

private:
  static constexpr std::size_t groups = 4, stride = groups * byteLanes;

  [[gnu::always_inline]] void compare(ByteLanes& agree, std::size_t at) const {
    ByteLanes rare, second;
    load(rare, atRare_ + at);
    load(second, atSecond_ + at);
    agree = (rare == rare_) & (second == second_);
  }
  [[gnu::always_inline]] std::size_t confirmed(const ByteLanes& agree, std::size_t at) const {
    static_assert(std::endian::native == std::endian::little, "the first lane is a word's lowest");
    LaneWords words;
    std::memcpy(words, &agree, sizeof(agree));
    for (std::size_t word = 0; word < std::size(words); ++word)
      for (auto left = words[word]; left != 0;) {
        const auto lane = std::size_t(std::countr_zero(left)) / 8;
        const auto position = at + word * sizeof(left) + lane;
        if (standsAt(bytes_ + position, text_)) return position;
        left &= ~(std::uint64_t{0xff} << (lane * 8));
      }
    return nowhere;
  }

  const char *bytes_, *atRare_, *atSecond_; ///< at position 0
  signed char rare_, second_;
  std::string_view text_;
};

using First = std::size_t (*)(const Needle&, const char*, std::size_t);

std::size_t firstAnywhere(const Needle& needle, const char* bytes, std::size_t positions) {
  return Search(needle, bytes).first(positions);
}

#if defined(__x86_64__)
/// With vectors of 64 bytes, whose comparisons leave a bit a byte; compilers don't make that of ByteLanes.
[[gnu::target("avx512bw")]] std::size_t firstAVX512(const Needle& needle, const char* bytes,
                                                    std::size_t positions) {
  constexpr std::size_t wide = 64;
  const auto rare = _mm512_set1_epi8(needle.text[needle.rare]);
  const auto second = _mm512_set1_epi8(needle.text[needle.second]);
  std::size_t at = 0;
  for (; at + 2 * wide <= positions; at += 2 * wide) {
    std::uint64_t agree[2];
    for (int i = 0; i < 2; ++i) {
      const char* const here = bytes + at + i * wide;
      const auto rares = _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(here + needle.rare), rare);
      agree[i] = _mm512_mask_cmpeq_epi8_mask(rares, _mm512_loadu_si512(here + needle.second), second);
    }
    if ((agree[0] | agree[1]) == 0) continue;
    for (int i = 0; i < 2; ++i)
      for (auto left = agree[i]; left != 0; left &= left - 1) {
        const auto position = at + i * wide + std::size_t(std::countr_zero(left));
        if (standsAt(bytes + position, needle.text)) return position;
      }
  }
  at = std::min(at, positions - byteLanes); // a full group may overlap what was looked at
  const auto found = Search(needle, bytes + at).first(positions - at);
  return found == nowhere ? nowhere : at + found;
}

[[gnu::target("avx2")]] std::size_t firstAVX2(const Needle& needle, const char* bytes,
                                              std::size_t positions) {
  return Search(needle, bytes).first(positions);
}
#endif

/// With the widest vectors up to that many bytes that this processor has.
First firstWithin([[maybe_unused]] std::size_t widestVector) {
#if defined(__x86_64__)
  if (widestVector >= 64 && __builtin_cpu_supports("avx512bw")) return firstAVX512;
  if (widestVector >= 32 && __builtin_cpu_supports("avx2")) return firstAVX2;
#endif
  return firstAnywhere;
}

const First widestFirst = firstWithin(64);

std::optional<std::size_t> find(const Needle& needle, std::string_view range, First first) {
  if (needle.text.size() < 2 || range.size() < needle.text.size()) return std::nullopt;
  const std::size_t positions = range.size() - needle.text.size() + 1;
  const auto found = positions < byteLanes ? range.find(needle.text) : first(needle, range.data(), positions);
  return found == nowhere ? std::nullopt : std::optional(found);
}

} // namespace

std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range) {
  return find(needle, range, widestFirst);
}

std::optional<std::size_t> findWithSIMD(const Needle& needle, std::string_view range,
                                        std::size_t widestVector) {
  return find(needle, range, firstWithin(widestVector));
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
