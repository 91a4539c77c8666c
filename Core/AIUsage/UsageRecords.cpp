#include "Core/AIUsage/UsageRecords.h"

#include <cstdio>
#include <cstdlib>

namespace korvell {

void tokenCountOverflow() {
  std::fputs("korvell: the token counts of the AI usage exceed 64 bits\n", stderr);
  std::abort();
}

std::int64_t addTokens(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) tokenCountOverflow();
  return sum;
}

std::int64_t subtractTokens(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  if (__builtin_sub_overflow(a, b, &difference)) tokenCountOverflow();
  return difference;
}

Counts& Counts::operator+=(const Counts& other) {
  for (const auto member :
       {&Counts::input, &Counts::output, &Counts::cacheWrite, &Counts::cacheWrite1h, &Counts::cacheRead})
    this->*member = addTokens(this->*member, other.*member);
  return *this;
}

std::int64_t Counts::total() const {
  return addTokens(addTokens(addTokens(input, output), cacheWrite), cacheRead);
}

std::size_t BucketHash::operator()(const BucketView& bucket) const {
  std::size_t seed = std::hash<std::int64_t>{}(bucket.day.number * 2 + (bucket.tool == AITool::codex));
  seed = hashCombine(seed, std::hash<std::string_view>{}(bucket.model));
  return hashCombine(seed, std::hash<std::string_view>{}(bucket.project));
}

} // namespace korvell
