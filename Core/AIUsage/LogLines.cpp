#include "Core/AIUsage/LogLines.h"

#include "Base/Text.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <simdjson.h>

// simdjson's DOM rather than its faster lazy interface, because only the DOM looks at the whole line: the
// lazy one lets malformed tails through. Its own lookup by name would take the first of two members and
// never see a wrong type in the second, so objects are walked.

namespace korvell {

namespace {

namespace dom = simdjson::dom;

bool read(dom::element element, std::string_view& result) { return !element.get_string().get(result); }
bool read(dom::element element, std::int64_t& result) {
  // get_int64() also takes what was written as a large unsigned number that fits; nothing else is changed.
  return element.is_int64() && !element.get_int64().get(result);
}
bool read(dom::element element, double& result) { return !element.get_double().get(result); }

template <Record T>
bool read(dom::element element, T& result);

template <class T>
bool read(dom::element element, std::optional<T>& result) {
  result.reset();
  return element.is_null() || read(element, result.emplace());
}

template <Record T>
bool read(dom::element element, T& result) {
  dom::object object;
  if (element.get_object().get(object)) return false;
  for (const auto [key, value] : object) {
    bool good = true;
    const auto take = [&, name = key, member = value](const auto& field) {
      if (name != field.name) return false;
      good = read(member, result.*field.member);
      return true;
    };
    std::apply([&](const auto&... field) { (void)(take(field) || ...); }, T::fields());
    if (!good) return false;
  }
  return true;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Of the JSON number with which the text begins; 0 when it begins with none.
std::size_t numberLength(std::string_view text) {
  std::size_t at = 0;
  const auto next = [&](std::string_view any) {
    const bool is = at < text.size() && any.find(text[at]) != std::string_view::npos;
    at += is;
    return is;
  };
  const auto digits = [&] {
    const auto from = at;
    while (at < text.size() && isDigit(text[at])) ++at;
    return at - from;
  };
  next("-");
  if (!next("0") && digits() == 0) return 0;
  if (next(".") && digits() == 0) return 0;
  if (!next("eE")) return at;
  next("+-");
  return digits() == 0 ? 0 : at;
}

bool fitsAType(std::string_view number) {
  if (number.find_first_of(".eE") != std::string_view::npos)
    return std::isfinite(std::strtod(std::string(number).c_str(), nullptr));
  return parseInteger<std::int64_t>(number) || parseInteger<std::uint64_t>(number);
}

/// The line with an empty list, which no member of ours takes, for each number that is well-formed but fits
/// no type; such numbers are harmless in members that are not ours. Nothing when there is none.
std::optional<std::string> withoutHugeNumbers(std::string_view line) {
  std::string result;
  bool inText = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    if (c == '"') inText = !inText;
    if (inText && c == '\\') ++at;
    if (inText || (c != '-' && !isDigit(c))) continue;
    const auto length = numberLength(line.substr(at));
    if (length == 0) return std::nullopt;
    if (!fitsAType(line.substr(at, length))) {
      if (result.empty()) {
        result.reserve(line.size() + simdjson::SIMDJSON_PADDING);
        result = line;
      }
      result.replace(at, length, length, ' ').replace(at, 2, "[]");
    }
    at += length - 1;
  }
  return result.empty() ? std::nullopt : std::optional(std::move(result));
}

constexpr std::size_t usualLine = std::size_t{1} << 16;
constexpr std::size_t longLine = std::size_t{1} << 20;

} // namespace

struct LineDecoder::Parser {
  dom::parser json;
};

const std::size_t LineDecoder::padding = simdjson::SIMDJSON_PADDING;

LineDecoder::LineDecoder() : parser_(std::make_unique<Parser>()) {}
LineDecoder::~LineDecoder() = default;

template <class Line>
std::optional<Line> LineDecoder::decode(std::string_view line) {
  // The parser's memory follows the longest line: grown by doubling, given back after an unusual one.
  if (parser_->json.capacity() > longLine && line.size() <= longLine) parser_ = std::make_unique<Parser>();
  if (parser_->json.capacity() < line.size() &&
      parser_->json.allocate(std::bit_ceil(std::max(line.size(), usualLine))))
    return std::nullopt;
  dom::element root;
  auto error = parser_->json.parse(line.data(), line.size(), false).get(root);
  if (error)
    if (const auto repaired = withoutHugeNumbers(line)) error = parser_->json.parse(*repaired).get(root);
  Line result;
  if (error || !read(root, result)) return std::nullopt;
  return result;
}

std::optional<ClaudeLine> LineDecoder::claude(std::string_view line) { return decode<ClaudeLine>(line); }
std::optional<CodexLine> LineDecoder::codex(std::string_view line) { return decode<CodexLine>(line); }

} // namespace korvell
