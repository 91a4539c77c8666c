#include "Base/Text.h"

#include <gmock/gmock.h>

using namespace korvell;
using namespace std::string_literals;
using testing::ElementsAre;

TEST(Text, splitting) {
  EXPECT_THAT(splitLines("a\n\nb\n"), ElementsAre("a", "", "b"));
  EXPECT_THAT(splitLines(""), ElementsAre());
  EXPECT_THAT(splitLines("\n"), ElementsAre(""));
  EXPECT_THAT(split(",a,,", ','), ElementsAre("", "a", "", ""));
  EXPECT_EQ(trimmed(" \t a b\r\n"), "a b");
  EXPECT_EQ(trimmed(" \n"), "");
  EXPECT_EQ(lowercased("ABCÄ"), "abcÄ") << "ASCII only";
}

TEST(Text, wholeNumbers) {
  EXPECT_EQ(parseInteger<int>("-12"), -12);
  EXPECT_EQ(parseInteger<std::uint64_t>("18446744073709551615"), UINT64_MAX);
  for (const char* refused : {"", "+1", " 1", "1 ", "1.0", "0x1", "-"})
    EXPECT_FALSE(parseInteger<int>(refused)) << refused;
  EXPECT_FALSE(parseInteger<std::uint64_t>("18446744073709551616"));
  EXPECT_FALSE(parseInteger<unsigned>("-1"));
  EXPECT_FALSE(parseInteger<std::int8_t>("128"));
}

TEST(Text, repairReplacesEachByteThatIsNoUTF8) {
  const std::string r = "\uFFFD";
  const struct {
    const char* what;
    std::string bytes, repaired;
  } rows[] = {
      {"good text of all lengths", "a\0ä€🙂"s, "a\0ä€🙂"s},
      {"a lone continuation", "a\x80z", "a" + r + "z"},
      {"an overlong slash", "\xC0\xAF", r + r},
      {"an overlong three-byte form", "\xE0\x80\xAF", r + r + r},
      {"a surrogate", "\xED\xA0\x80", r + r + r},
      {"the last character", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
      {"beyond the last character", "\xF4\x90\x80\x80", r + r + r + r},
      {"a lead byte that never is one", "\xF8\x88\x80\x80\x80", r + r + r + r + r},
      {"cut short at the end", "a\xE2\x82", "a" + r + r},
      {"cut short before a good one", "\xE2\x82ä", r + r + "ä"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(repairedUTF8(row.bytes), row.repaired) << row.what;
    EXPECT_EQ(repairedUTF8(row.repaired), row.repaired) << row.what;
  }
}

TEST(Text, whatATerminalWouldObeyIsShownInstead) {
  const struct {
    std::string text, escaped;
  } rows[] = {
      {"plain ä 日", "plain ä 日"},
      {"\x1b]0;title\x07", "\\x1b]0;title\\x07"},
      {"a\nb\rc\td", "a\\x0ab\\x0dc\\x09d"},
      {"\0\x7F"s, "\\x00\\x7f"},
      {"\xC2\x9Bm", "\\u009bm"},
      {"\x9Bm", "\uFFFDm"},
      {"evil\u202Egpj.exe", "evil\\u202egpj.exe"},
      {"\u2066a\u2069", "\\u2066a\\u2069"},
  };
  for (const auto& row : rows) EXPECT_EQ(escapedControls(row.text), row.escaped);
}

TEST(Text, widthsOnATerminal) {
  const struct {
    const char* text;
    int width;
  } rows[] = {
      {"", 0},     {"abc", 3},  {"äöü", 3}, {"a\u0308", 1}, // a and a combining mark
      {"日本", 4}, {"한국", 4}, {"ｱ", 1},   {"Ａ", 2},      {"🙂", 2}, {"👍🏽", 2}, {"\u200B\uFEFF", 0},
      {"–…▁█", 4}, {"\xFF", 1}, {"🇩🇪", 2},  {"█░", 2},      {"°C", 2},
  };
  for (const auto& row : rows) EXPECT_EQ(displayWidth(row.text), row.width) << row.text;
}

TEST(Text, truncation) {
  const struct {
    const char* text;
    int columns;
    const char* expected;
  } rows[] = {
      {"abcdef", 6, "abcdef"},
      {"abcdef", 5, "abcd…"},
      {"abcdef", 1, "…"},
      {"abcdef", -3, ""},
      {"日本語", 5, "日本…"},
      {"日本語", 4, "日…"}, // not half a character
      {"e\u0301e\u0301e\u0301", 2, "e\u0301…"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(truncatedToWidth(row.text, row.columns), row.expected) << row.text << " " << row.columns;
  EXPECT_EQ(truncatedToWidth("abcdef", 4, "..."), "a...");
  EXPECT_EQ(truncatedToWidth("abcdef", 2, "..."), "");
}
