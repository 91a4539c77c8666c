#include "Core/AIUsage/LogLines.h"

#include <bit>
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
  // Numbers that fit no type are well-formed JSON, and harmless in members that are not ours.
  if (error == simdjson::NUMBER_ERROR && line.size() <= longLine) {
    const auto value = parseJSON(line);
    if (!value) return std::nullopt;
    error = parser_->json.parse(dumpJSON(*value)).get(root);
  }
  Line result;
  if (error || !read(root, result)) return std::nullopt;
  return result;
}

std::optional<ClaudeLine> LineDecoder::claude(std::string_view line) { return decode<ClaudeLine>(line); }
std::optional<CodexLine> LineDecoder::codex(std::string_view line) { return decode<CodexLine>(line); }

} // namespace korvell
