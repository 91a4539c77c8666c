#include "Core/AIUsage/JSONTokens.h"

#include "Base/Value.h"
#include "LogText.h"

#include <gtest/gtest.h>
#include <random>

namespace korvell {
namespace {

bool isWellFormed(JSONTokens& tokens, const std::string& text) {
  const PaddedLine line(text);
  return tokens.begin(line) && tokens.skip() && tokens.atEnd();
}

// Damaged a little, most lines are still nearly right, which is where a reader goes wrong.
TEST(JSONTokensTests, takesWhatAnotherReaderTakes) {
  const std::string lines[] = {
      R"({"a\\":"\\\\x\"","b":[1,-2.5e+3,true,null,{}],"c":{"":"\u00e9\ud83d\ude00\/\b\f\n\r\t"}, "d" : 0 })",
      R"(["\\\"\\\\\"","\\\\\\n",[[]],-0,1E9,false,"\ud83d\u0041\udc00\ud83d\ud83d\ude00"])",
      "\"\\n\\u0041\xc3\xa9\xf0\x9f\x98\x80\""};
  const std::string bytes =
      "\\\\\\\"\"u{}[],:0123456789abcdefDntr-+.eE \t\r/\x01\x1f\x7f\x80\xc3\xa9\xed\xff";
  std::mt19937 random(11);
  JSONTokens tokens;
  int good = 0;
  for (int round = 0; round < 30'000; ++round) {
    std::string text = lines[random() % std::size(lines)];
    for (auto changes = random() % 3; changes > 0; --changes) {
      const auto at = random() % text.size();
      const char byte = bytes[random() % bytes.size()];
      switch (random() % 3) {
      case 0:
        text[at] = byte;
        break;
      case 1:
        text.insert(at, 1, byte);
        break;
      default:
        text.erase(at, 1);
      }
    }
    const bool expected = parseJSON(withoutLoneSurrogates(text)).has_value();
    good += expected;
    ASSERT_EQ(isWellFormed(tokens, text), expected) << text;
  }
  EXPECT_GT(good, 10'000);
  EXPECT_LT(good, 25'000);
}

TEST(JSONTokensTests, textsAndNamesWithEscapes) {
  JSONTokens tokens;
  const PaddedLine line(R"({"\u0061\\":"plain","b":"\ud83d\ude00\n","c":"\\d"})");
  ASSERT_TRUE(tokens.begin(line));
  std::vector<std::string> read;
  ASSERT_TRUE(tokens.object([&](std::string_view name) {
    std::string_view text;
    const bool good = tokens.text(text);
    read.insert(read.end(), {std::string(name), std::string(text)});
    return good;
  }));
  EXPECT_TRUE(tokens.atEnd());
  EXPECT_EQ(read, (std::vector<std::string>{"a\\", "plain", "b", "😀\n", "c", "\\d"}));
}

TEST(JSONTokensTests, halvesOfSurrogatePairsBecomeReplacementCharacters) {
  const std::pair<const char*, const char*> rows[] = {{R"("a\ud83d")", "a�"},
                                                      {R"("\ude00b\ud83d\ud83d\ude00")", "�b�😀"},
                                                      {R"("\ud83d\n\\ud83d")", "�\n\\ud83d"},
                                                      {R"("\uD83Dx\u00e9")", "�xé"}};
  JSONTokens tokens;
  for (const auto& [text, expected] : rows) {
    std::string_view read;
    const PaddedLine line(text);
    ASSERT_TRUE(tokens.begin(line) && tokens.text(read)) << text;
    EXPECT_EQ(read, expected) << text;
    EXPECT_TRUE(isWellFormed(tokens, text)) << text;
  }
  for (const char* text : {R"("\ud83")", R"("\ud83g")", R"("\ud83d\")"})
    EXPECT_FALSE(isWellFormed(tokens, text));
}

TEST(JSONTokensTests, numbers) {
  JSONTokens tokens;
  const auto integer = [&](const char* text) {
    std::int64_t value = 0;
    const PaddedLine line(text);
    return tokens.begin(line) && tokens.integer(value) && tokens.atEnd() ? std::optional(value)
                                                                         : std::nullopt;
  };
  const auto number = [&](const char* text) {
    double value = 0;
    const PaddedLine line(text);
    return tokens.begin(line) && tokens.number(value) && tokens.atEnd() ? std::optional(value) : std::nullopt;
  };
  EXPECT_EQ(integer("-0"), 0);
  EXPECT_EQ(integer("999999999999999999"), 999'999'999'999'999'999);
  EXPECT_EQ(integer("9223372036854775807"), INT64_MAX);
  EXPECT_EQ(integer("-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(integer("300.0"), 300);
  EXPECT_EQ(integer("-3e2"), -300);
  EXPECT_EQ(integer("0.0"), 0);
  for (const char* text :
       {"9223372036854775808", "00", "-", "01", "1.5", "1e-2", "1e16", "1.", "+1", "0000000000000000000001"})
    EXPECT_FALSE(integer(text)) << text;
  EXPECT_EQ(number("7"), 7);
  EXPECT_EQ(number("-12.5e-1"), -1.25);
  EXPECT_EQ(number("18446744073709551616"), 18'446'744'073'709'551'616.0);
  for (const char* text : {"1e400", "1.", ".5", "NaN", "0x1", "1 2"}) EXPECT_FALSE(number(text)) << text;
}

} // namespace
} // namespace korvell
