#include "Core/AIUsage/JSONTokens.h"

#include "Base/Text.h"
#include "Base/Value.h"
#include "Core/AIUsage/ByteLanes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <simdjson.h>

namespace korvell {

namespace {

constexpr std::size_t usualLine = std::size_t{1} << 16;
constexpr std::size_t longLine = std::size_t{1} << 18;

/// Whether a backslash begins anything but the escapes that program text is full of, none of which stands for
/// a letter; or a run of three may do so, whose meaning depends on its length.
[[gnu::always_inline]] inline bool hasRareEscapes(std::string_view line) {
  if (line[0] == '\\' || line[1] == '\\') return true; // before them is nothing to look at
  for (std::size_t at = 2; at < line.size(); at += byteLanes) {
    ByteLanes beforeLast, last, here, next;
    load(beforeLast, line.data() + at - 2);
    load(last, line.data() + at - 1);
    load(here, line.data() + at);
    load(next, line.data() + at + 1);
    const auto usual = (next == '"') | (next == '\\') | (next == 'n') | (next == 't');
    const auto escaped = (last == '\\') & (beforeLast != '\\');
    if (holdsAnywhere((here == '\\') & ~(usual | escaped))) return true;
  }
  return false;
}

using HasRareEscapes = bool (*)(std::string_view);

bool hasRareEscapesAnywhere(std::string_view line) { return hasRareEscapes(line); }

#if defined(__x86_64__)
[[gnu::target("avx2")]] bool hasRareEscapesAVX2(std::string_view line) { return hasRareEscapes(line); }
const HasRareEscapes widestHasRareEscapes =
    __builtin_cpu_supports("avx2") ? hasRareEscapesAVX2 : hasRareEscapesAnywhere;
#else
constexpr HasRareEscapes widestHasRareEscapes = hasRareEscapesAnywhere;
#endif

bool isHighSurrogate(std::uint16_t unit) { return unit >> 10 == 0xd800 >> 10; }
bool isLowSurrogate(std::uint16_t unit) { return unit >> 10 == 0xdc00 >> 10; }

constexpr std::size_t unitLength = 6;

/// Of "\uXXXX" at the beginning.
std::optional<std::uint16_t> escapedUnit(std::string_view text) {
  if (!text.starts_with("\\u") || text.size() < unitLength) return std::nullopt;
  return parseInteger<std::uint16_t>(text.substr(2, 4), 16);
}

bool escapesAreValid(std::string_view line) {
  for (auto at = line.find('\\'); at != std::string_view::npos; at = line.find('\\', at)) {
    if (escapedUnit(line.substr(at))) {
      at += unitLength;
    } else {
      if (at + 1 == line.size() ||
          std::string_view("\"\\/bfnrt").find(line[at + 1]) == std::string_view::npos)
        return false;
      at += 2;
    }
  }
  return true;
}

/// The largest number up to which a double tells all whole ones apart.
constexpr double mostExact = 9'007'199'254'740'992;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNumber(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  const auto next = [&](char c) { return at < end && *at == c && ++at; };
  const auto digits = [&] {
    const char* const from = at;
    while (at < end && isDigit(*at)) ++at;
    return at > from;
  };
  next('-');
  if (!next('0') && !digits()) return false;
  if (next('.') && !digits()) return false;
  if (next('e') || next('E')) {
    if (!next('+')) next('-');
    if (!digits()) return false;
  }
  return at == end;
}

} // namespace

std::string withoutLoneSurrogates(std::string_view json) {
  std::string result;
  std::size_t copied = 0;
  for (auto at = json.find('\\'); at != std::string_view::npos; at = json.find('\\', at)) {
    const auto unit = escapedUnit(json.substr(at));
    if (!unit) {
      at += 2;
      continue;
    }
    const auto low = isHighSurrogate(*unit) ? escapedUnit(json.substr(at + unitLength)) : std::nullopt;
    if (low && isLowSurrogate(*low)) {
      at += 2 * unitLength;
      continue;
    }
    if (isHighSurrogate(*unit) || isLowSurrogate(*unit)) {
      result.append(json.substr(copied, at - copied)).append("\\ufffd");
      copied = at + unitLength;
    }
    at += unitLength;
  }
  return result.append(json.substr(copied));
}

struct JSONTokens::Library {
  std::unique_ptr<simdjson::internal::dom_parser_implementation> passes;

  /// Memory for a line: it follows the longest, grown by doubling, and is given back after an unusual one.
  bool hold(std::size_t size) {
    const bool fits =
        passes && passes->capacity() >= size && (passes->capacity() <= longLine || size > longLine);
    if (fits) return true;
    passes.reset();
    return simdjson::get_active_implementation()->create_dom_parser_implementation(
               std::bit_ceil(std::max(size, usualLine)), 1, passes) == simdjson::SUCCESS;
  }
};

const std::size_t JSONTokens::padding = simdjson::SIMDJSON_PADDING;

JSONTokens::JSONTokens() : library_(std::make_unique<Library>()) {}
JSONTokens::~JSONTokens() = default;

bool JSONTokens::begin(std::string_view line) {
  if (!texts_.empty()) texts_.clear();
  if (line.empty() || !library_->hold(line.size())) return false;
  rareEscapes_ = widestHasRareEscapes(line);
  if (rareEscapes_ && !escapesAreValid(line)) return false;
  auto& passes = *library_->passes;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(line.data());
  if (passes.stage1(bytes, line.size(), simdjson::stage1_mode::regular)) return false;
  passes.structural_indexes[passes.n_structural_indexes] = std::uint32_t(line.size());
  line_ = line;
  next_ = passes.structural_indexes.get();
  end_ = next_ + passes.n_structural_indexes;
  depth_ = 0;
  return true;
}

bool JSONTokens::unescape(std::string_view& text, std::string& plain) {
  const auto value = parseJSON(withoutLoneSurrogates(text));
  if (!value || !value->asString()) return false;
  text = plain = *value->asString();
  return true;
}

bool JSONTokens::isNull() {
  if (token() != "null") return false;
  ++next_;
  return true;
}

bool JSONTokens::text(std::string_view& result) {
  if (peek() != '"') return false;
  result = token();
  ++next_;
  if (result.find('\\') != std::string_view::npos) return unescape(result, texts_.emplace_back());
  result = result.substr(1, result.size() - 2);
  return true;
}

bool JSONTokens::plainInteger(std::int64_t& result) {
  const auto text = token();
  const auto digits = text.substr(text.starts_with('-'));
  if (digits.empty() || (digits.size() > 1 && digits[0] == '0')) return false;
  if (digits.size() > 18) { // too much for the loop, perhaps for the type
    const auto value = parseInteger<std::int64_t>(text);
    result = value.value_or(0);
    next_ += value.has_value();
    return value.has_value();
  }
  std::int64_t value = 0;
  for (const char c : digits) {
    if (!isDigit(c)) return false;
    value = value * 10 + (c - '0');
  }
  result = text.size() > digits.size() ? -value : value;
  ++next_;
  return true;
}

bool JSONTokens::number(double& result) {
  if (std::int64_t whole = 0; plainInteger(whole)) {
    result = double(whole);
    return true;
  }
  return real(result);
}

bool JSONTokens::wholeReal(std::int64_t& result) {
  double value = 0;
  if (!real(value) || std::trunc(value) != value || std::abs(value) > mostExact) return false;
  result = std::int64_t(value);
  return true;
}

bool JSONTokens::real(double& result) {
  const auto text = token();
  const auto value = isNumber(text) ? parseJSON(text) : std::nullopt;
  const auto number = value ? value->asDouble() : std::nullopt;
  if (!number) return false;
  result = *number;
  ++next_;
  return true;
}

bool JSONTokens::array() {
  if (!take('[') || ++depth_ > deepest) return false;
  if (!take(']')) {
    do
      if (!skip()) return false;
    while (take(','));
    if (!take(']')) return false;
  }
  --depth_;
  return true;
}

bool JSONTokens::skip() {
  switch (peek()) {
  case '"':
    ++next_;
    return true;
  case '{':
    return object([this](std::string_view) { return skip(); });
  case '[':
    return array();
  default:
    const auto text = token();
    if (text != "null" && text != "true" && text != "false" && !isNumber(text)) return false;
    ++next_;
    return true;
  }
}

} // namespace korvell
