#include "Core/AIUsage/LineSearch.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

namespace korvell {
namespace {

constexpr std::size_t vectors[] = {16, 32, 64};

// Texts over three letters agree with the needles' anchors all the time.
TEST(LineSearchTests, findsWhatAPlainSearchFinds) {
  std::mt19937 random(7);
  const Needle needles[] = {
      {"ab"}, {"aa"}, {"abc", 'c', 'a'}, {"cabba", 'c', 'b'}, {"aaaaaaaaaaaaaaaaaaaaab", 'b', 'a'}};
  for (int round = 0; round < 20'000; ++round) {
    std::string text(random() % 500, 'a');
    for (auto& c : text) c = char('a' + (random() % 8 == 0 ? random() % 3 : 0));
    for (const auto& needle : needles) {
      const auto expected = text.find(needle.text);
      for (const auto vector : vectors)
        ASSERT_EQ(findWithSIMD(needle, text, vector).value_or(std::string::npos), expected)
            << needle.text << " in " << text << " with vectors of " << vector;
    }
    if (!text.empty()) text[random() % text.size()] = '\n';
    ASSERT_EQ(lastLineFeed(text).value_or(std::string::npos), text.rfind('\n')) << text;
  }
}

TEST(LineSearchTests, everyNeedleIsFoundAtEveryPlace) {
  for (const auto& needle : {usageNeedle, assistantNeedle, messageIDNeedle, requestIDNeedle, tokenCountNeedle,
                             turnContextNeedle, codexNeedle})
    for (std::size_t before = 0; before < 270; ++before)
      for (const std::size_t after : {0, 1, 15, 64}) {
        const std::string text =
            std::string(before, '"') + std::string(needle.text) + std::string(after, '"');
        for (const auto vector : vectors) {
          EXPECT_EQ(findWithSIMD(needle, text, vector), before) << needle.text;
          EXPECT_FALSE(findWithSIMD(needle, std::string_view(text).substr(before + 1), vector));
        }
      }
}

TEST(LineSearchTests, shortNeedlesAndRangesMatchNothing) {
  EXPECT_FALSE(findWithSIMD({"a"}, "aaaa"));
  EXPECT_FALSE(findWithSIMD({""}, "aaaa"));
  EXPECT_FALSE(findWithSIMD({"ab"}, "a"));
  EXPECT_FALSE(findWithSIMD({"ab"}, ""));
  EXPECT_FALSE(contains(R"("usage": {"input_tokens":1})", usageNeedle)) << "blanks are not compact JSON";
}

} // namespace
} // namespace korvell
