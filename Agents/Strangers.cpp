#include "Agents/Strangers.h"

#include "Base/Text.h"

#include <cmath>

namespace korvell {

namespace {

struct Span {
  char32_t first, last;
};
/// Seen by nobody, read by a program all the same.
constexpr Span invisible[] = {{0x00AD, 0x00AD}, {0x034F, 0x034F}, {0x061C, 0x061C},  {0x115F, 0x1160},
                              {0x17B4, 0x17B5}, {0x180B, 0x180F}, {0x200B, 0x200F},  {0x202A, 0x202E},
                              {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFE00, 0xFE0F},  {0xFEFF, 0xFEFF},
                              {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0xE0000, 0xE0FFF}};

bool isInvisible(char32_t c) {
  for (const auto& span : invisible)
    if (span.first <= c && c <= span.last) return true;
  return false;
}

bool isControl(char32_t c) { return c < 0x20 || (0x7F <= c && c <= 0x9F) || c == 0x2028 || c == 0x2029; }

/// Digits that no figure here is good for are dropped: whoever pays for each of them reads it.
double rounded(double number) {
  const double steps = std::abs(number) < 1 ? 10'000 : 100;
  return std::abs(number) < 1e12 ? std::round(number * steps) / steps : number;
}

struct Character {
  char32_t code;
  std::size_t length;
};

/// The text is UTF-8.
Character firstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const auto lead = byte(0);
  const std::size_t length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  char32_t code = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) code = (code << 6) | (byte(i) & 0x3Fu);
  return {code, length};
}

} // namespace

std::string cleanedText(std::string_view text, std::size_t most) {
  // A byte more than four a character can't be kept, whatever it is.
  const auto repaired = repairedUTF8(text.substr(0, most * 8));
  std::string result;
  std::size_t count = 0;
  bool isCut = repaired.size() < text.size() && text.size() > most * 8;
  for (std::string_view rest = repaired; !rest.empty();) {
    const auto [code, length] = firstCharacter(rest);
    const auto bytes = rest.substr(0, length);
    rest.remove_prefix(length);
    if (isInvisible(code)) continue;
    if (++count > most) {
      isCut = true;
      break;
    }
    isControl(code) ? result += ' ' : result += bytes;
  }
  return isCut ? result + "…" : result;
}

Value cleanedValue(Value value) {
  if (const auto* text = value.asString()) return cleanedText(*text);
  if (const auto* elements = value.asArray()) {
    Value::Array cleaned;
    cleaned.reserve(elements->size());
    for (const auto& element : *elements) cleaned.push_back(cleanedValue(element));
    return cleaned;
  }
  if (const auto* members = value.asObject()) {
    Value::Object cleaned;
    cleaned.reserve(members->size());
    for (const auto& [name, member] : *members) cleaned.emplace_back(name, cleanedValue(member));
    return cleaned;
  }
  if (const auto number = value.asDouble(); number && !value.asInt() && !value.asUnsigned())
    return rounded(*number);
  return value;
}

} // namespace korvell
