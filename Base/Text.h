#pragma once
// Small operations on text that several rooms need.

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The lines of a text without their line feeds; a last line without one counts, an empty last one does not.
std::vector<std::string_view> splitLines(std::string_view text);
std::vector<std::string_view> split(std::string_view text, char separator);
std::string_view trimmed(std::string_view text);
std::string lowercased(std::string_view ascii);

/// The whole text as a number; nothing when anything else stands in it or it does not fit.
template <class Integer>
std::optional<Integer> parseInteger(std::string_view text, int base = 10) {
  Integer value{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc{} || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

/// Takes a number such as "12.34" off the front: digits, and a point with digits where one follows, in every
/// locale. Nothing, and the text as it was, when it begins with anything else; nothing when it is no finite
/// number.
std::optional<double> takeDecimal(std::string_view& text);

/// Every byte sequence that is not UTF-8 becomes one U+FFFD a byte.
std::string repairedUTF8(std::string_view bytes);

/// Safe to print on a terminal: control characters (C0, DEL, C1) become \xNN or \uNNNN; bytes that are not
/// UTF-8 become U+FFFD.
std::string escapedControls(std::string_view text);

/// Columns that a text takes on a terminal: 2 for wide East Asian characters and emoji, 0 for combining
/// marks and other characters without width, 1 otherwise. The text is UTF-8 without control characters.
int displayWidth(std::string_view text);
/// At most `columns` wide; a text that is cut ends in `ellipsis`, which counts.
std::string truncatedToWidth(std::string_view text, int columns, std::string_view ellipsis = "…");

} // namespace korvell
