#include "Core/AIUsage/UsageRecords.h"

namespace korvell {

std::int64_t addTokens(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  return __builtin_add_overflow(a, b, &sum) ? b > 0 ? INT64_MAX : INT64_MIN : sum;
}

std::int64_t subtractTokens(std::int64_t a, std::int64_t b) {
  std::int64_t difference = 0;
  return __builtin_sub_overflow(a, b, &difference) ? b < 0 ? INT64_MAX : INT64_MIN : difference;
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

const std::string* StringPool::intern(std::string_view text) {
  if (last_ && *last_ == text) return last_;
  auto found = texts_.find(text);
  if (found == texts_.end()) {
    found = texts_.emplace(text).first;
    bytes_ += text.size() + sizeof(std::string);
  }
  return last_ = &*found;
}

void StringPool::clear() {
  texts_.clear();
  last_ = nullptr;
  bytes_ = 0;
}

std::size_t BucketHash::operator()(const Bucket& bucket) const {
  const std::hash<const void*> hash;
  const auto day = std::size_t(bucket.day.number * 2 + (bucket.tool == AITool::codex));
  return hashCombine(hashCombine(day, hash(bucket.model)), hash(bucket.project));
}

} // namespace korvell
