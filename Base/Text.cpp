#include "Base/Text.h"

#include <cmath>
#include <cstdint>
#include <fmt/format.h>

namespace korvell {

std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const auto end = text.find(separator);
    parts.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return parts;
    text.remove_prefix(end + 1);
  }
}

std::vector<std::string_view> splitLines(std::string_view text) {
  auto lines = split(text, '\n');
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view space = " \t\r\n\v\f";
  const auto first = text.find_first_not_of(space);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(space) - first + 1);
}

std::string lowercased(std::string_view ascii) {
  std::string result(ascii);
  for (char& c : result)
    if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
  return result;
}

std::optional<double> takeDecimal(std::string_view& text) {
  // As one whole number over a power of ten, so that "8.45" is the double nearest to it.
  double digits = 0, scale = 1;
  std::size_t i = 0;
  const auto isDigit = [&] { return i < text.size() && text[i] >= '0' && text[i] <= '9'; };
  for (; isDigit(); ++i) digits = digits * 10 + (text[i] - '0');
  if (i == 0) return std::nullopt;
  if (i < text.size() && text[i] == '.')
    for (++i; isDigit(); ++i, scale *= 10) digits = digits * 10 + (text[i] - '0');
  text.remove_prefix(i);
  const double value = digits / scale;
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Decoded {
  char32_t codePoint = 0;
  size_t length = 0; ///< bytes; 0 when they are no UTF-8
};

/// The character at the start of a text that is not empty.
Decoded decode(std::string_view text) {
  const auto byte = [text](size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  if (first < 0x80) return {first, 1};
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return {};
  char32_t codePoint = first & (0xFFu >> (length + 1));
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return {};
    codePoint = (codePoint << 6) | (byte(i) & 0x3Fu);
  }
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  if (codePoint < smallest[length] || codePoint > 0x10FFFF || surrogate) return {};
  return {codePoint, length};
}

/// The bytes up to the first one that is no UTF-8.
size_t validPrefix(std::string_view bytes) {
  size_t end = 0;
  while (end < bytes.size()) {
    if (static_cast<std::uint8_t>(bytes[end]) < 0x80) {
      ++end;
      continue;
    }
    const auto length = decode(bytes.substr(end)).length;
    if (length == 0) break;
    end += length;
  }
  return end;
}

struct Range {
  char32_t first, last;
};

// East Asian wide and fullwidth characters, and emoji that terminals draw two columns wide.
constexpr Range wide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x2329, 0x232A},   {0x23E9, 0x23EC},   {0x23F0, 0x23F0},
    {0x23F3, 0x23F3},   {0x25FD, 0x25FE},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267F, 0x267F},
    {0x2693, 0x2693},   {0x26A1, 0x26A1},   {0x26AA, 0x26AB},   {0x26BD, 0x26BE},   {0x26C4, 0x26C5},
    {0x26CE, 0x26CE},   {0x26D4, 0x26D4},   {0x26EA, 0x26EA},   {0x26F2, 0x26F3},   {0x26F5, 0x26F5},
    {0x26FA, 0x26FA},   {0x26FD, 0x26FD},   {0x2705, 0x2705},   {0x270A, 0x270B},   {0x2728, 0x2728},
    {0x274C, 0x274C},   {0x274E, 0x274E},   {0x2753, 0x2755},   {0x2757, 0x2757},   {0x2795, 0x2797},
    {0x27B0, 0x27B0},   {0x27BF, 0x27BF},   {0x2B1B, 0x2B1C},   {0x2B50, 0x2B50},   {0x2B55, 0x2B55},
    {0x2E80, 0x303E},   {0x3041, 0x33FF},   {0x3400, 0x4DBF},   {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},
    {0xA960, 0xA97F},   {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE10, 0xFE19},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x16FE0, 0x18CFF}, {0x1AFF0, 0x1B2FB}, {0x1F004, 0x1F004},
    {0x1F0CF, 0x1F0CF}, {0x1F18E, 0x1F18E}, {0x1F191, 0x1F19A}, {0x1F200, 0x1F320}, {0x1F32D, 0x1F335},
    {0x1F337, 0x1F37C}, {0x1F37E, 0x1F393}, {0x1F3A0, 0x1F3CA}, {0x1F3CF, 0x1F3D3}, {0x1F3E0, 0x1F3F0},
    {0x1F3F4, 0x1F3F4}, {0x1F3F8, 0x1F43E}, {0x1F440, 0x1F440}, {0x1F442, 0x1F4FC}, {0x1F4FF, 0x1F53D},
    {0x1F54B, 0x1F54E}, {0x1F550, 0x1F567}, {0x1F57A, 0x1F57A}, {0x1F595, 0x1F596}, {0x1F5A4, 0x1F5A4},
    {0x1F5FB, 0x1F64F}, {0x1F680, 0x1F6C5}, {0x1F6CC, 0x1F6CC}, {0x1F6D0, 0x1F6D2}, {0x1F6D5, 0x1F6D7},
    {0x1F6DC, 0x1F6DF}, {0x1F6EB, 0x1F6EC}, {0x1F6F4, 0x1F6FC}, {0x1F7E0, 0x1F7EB}, {0x1F7F0, 0x1F7F0},
    {0x1F90C, 0x1F93A}, {0x1F93C, 0x1F945}, {0x1F947, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD}};

// Combining marks, joiners and variation selectors.
constexpr Range zeroWidth[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489},   {0x0591, 0x05BD},   {0x05BF, 0x05BF},  {0x05C1, 0x05C2},
    {0x05C4, 0x05C5}, {0x0610, 0x061A},   {0x064B, 0x065F},   {0x0670, 0x0670},  {0x06D6, 0x06DC},
    {0x06DF, 0x06E4}, {0x06E7, 0x06E8},   {0x06EA, 0x06ED},   {0x0711, 0x0711},  {0x0730, 0x074A},
    {0x0900, 0x0902}, {0x093A, 0x093A},   {0x093C, 0x093C},   {0x0941, 0x0948},  {0x094D, 0x094D},
    {0x0951, 0x0957}, {0x0E31, 0x0E31},   {0x0E34, 0x0E3A},   {0x0E47, 0x0E4E},  {0x1160, 0x11FF},
    {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF},   {0x200B, 0x200F},   {0x202A, 0x202E},  {0x2060, 0x2064},
    {0x20D0, 0x20F0}, {0x302A, 0x302D},   {0x3099, 0x309A},   {0xFE00, 0xFE0F},  {0xFE20, 0xFE2F},
    {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}, {0xE0001, 0xE007F}, {0xE0100, 0xE01EF}};

template <size_t N>
bool contains(const Range (&ranges)[N], char32_t c) {
  for (const auto& range : ranges)
    if (c >= range.first && c <= range.last) return true;
  return false;
}

int columns(char32_t c) {
  if (c < 0x300) return 1;
  if (contains(zeroWidth, c)) return 0;
  return contains(wide, c) ? 2 : 1;
}

} // namespace

std::string repairedUTF8(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  while (!bytes.empty()) {
    const auto valid = validPrefix(bytes);
    result += bytes.substr(0, valid);
    if (valid == bytes.size()) break;
    result += replacement;
    bytes.remove_prefix(valid + 1);
  }
  return result;
}

std::string escapedControls(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto [c, length] = decode(text);
    const bool directional = (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    if (length == 0)
      result += replacement;
    else if (c < 0x20 || c == 0x7F)
      result += fmt::format("\\x{:02x}", unsigned(c));
    else if ((c >= 0x80 && c < 0xA0) || directional)
      result += fmt::format("\\u{:04x}", unsigned(c));
    else
      result += text.substr(0, length);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

int displayWidth(std::string_view text) {
  int width = 0;
  while (!text.empty()) {
    const auto [c, length] = decode(text);
    width += length == 0 ? 1 : columns(c);
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return width;
}

std::string truncatedToWidth(std::string_view text, int limit, std::string_view ellipsis) {
  if (displayWidth(text) <= limit) return std::string(text);
  const int room = limit - displayWidth(ellipsis);
  if (room < 0) return {};
  size_t end = 0;
  for (int width = 0; end < text.size();) {
    const auto [c, length] = decode(text.substr(end));
    const int next = width + (length == 0 ? 1 : columns(c));
    if (next > room) break;
    width = next;
    end += length == 0 ? 1 : length;
  }
  return std::string(text.substr(0, end)) + std::string(ellipsis);
}

} // namespace korvell
