#include "Core/AIUsage/LogLines.h"

#include <cstring>

namespace korvell {

namespace {

bool read(JSONTokens& json, std::string_view& result) { return json.text(result); }
bool read(JSONTokens& json, std::int64_t& result) {
  return json.integer(result) && -largestCount <= result && result <= largestCount;
}
bool read(JSONTokens& json, double& result) { return json.number(result); }

template <Record T>
bool read(JSONTokens& json, T& result);

template <class T>
bool read(JSONTokens& json, std::optional<T>& result) {
  result.reset();
  return json.null() || read(json, result.emplace());
}

/// Reads the value when it is the record's field at that place.
template <std::size_t at, Record T>
bool isField(JSONTokens& json, std::string_view name, T& result, bool& good) {
  constexpr auto field = std::get<at>(T::fields());
  constexpr std::string_view expected = field.name;
  // Of constant length, which compilers turn into a comparison or two.
  if (name.size() != expected.size() || std::memcmp(name.data(), expected.data(), expected.size()) != 0)
    return false;
  good = read(json, result.*field.member);
  return true;
}

template <Record T, std::size_t... at>
bool readMember(JSONTokens& json, std::string_view name, T& result, std::index_sequence<at...>) {
  bool good = true;
  const bool known = (isField<at>(json, name, result, good) || ...);
  return known ? good : json.skip();
}

template <Record T>
bool read(JSONTokens& json, T& result) {
  using Fields = std::make_index_sequence<std::tuple_size_v<decltype(T::fields())>>;
  return json.object([&](std::string_view name) { return readMember(json, name, result, Fields()); });
}

} // namespace

template <class Line>
std::optional<Line> LineDecoder::decode(std::string_view line) {
  Line result;
  if (!json_.begin(line) || !read(json_, result) || !json_.atEnd()) return std::nullopt;
  return result;
}

std::optional<ClaudeLine> LineDecoder::claude(std::string_view line) { return decode<ClaudeLine>(line); }
std::optional<CodexLine> LineDecoder::codex(std::string_view line) { return decode<CodexLine>(line); }

} // namespace korvell
