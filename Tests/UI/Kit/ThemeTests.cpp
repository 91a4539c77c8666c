#include "Tests/UI/Kit/KitFixture.h"

#include "UI/Kit/Contrast.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Tone.h"
#include "UI/Kit/Type.h"

#include <set>

namespace korvell {
namespace {

using testing::ElementsAre;

struct ThemeTests : KitTests {};

TEST_F(ThemeTests, everyInkIsStrongEnoughOnEveryGroundThatItStandsOn) {
  for (auto appearance : {Appearance::light, Appearance::dark})
    for (bool highContrast : {false, true}) {
      theme.set({.appearance = appearance, .highContrast = highContrast});
      for (const auto& demand : contrastDemands())
        EXPECT_GE(contrast(theme.color(demand.ink), theme.color(demand.ground)), demand.least)
            << nameOf(demand.ink) << " on " << nameOf(demand.ground)
            << (theme.isDark() ? ", dark" : ", light");
    }
}

TEST_F(ThemeTests, coloursAreThoseThatWereMeasured) {
  struct Measured {
    Token ink;
    double light, dark;
  };
  using enum Token;
  for (auto [ink, light, dark] : {Measured{text1, 16.5, 14.6},
                                  {text2, 7.8, 8.6},
                                  {text3, 5.7, 6.2},
                                  {border, 3.7, 3.9},
                                  {accent, 6.4, 7.9},
                                  {good, 5.5, 7.5},
                                  {info, 6.4, 7.4},
                                  {warning, 6.0, 9.0},
                                  {warningMark, 3.5, 9.0},
                                  {critical, 6.3, 7.2},
                                  {cpu, 7.4, 7.0},
                                  {memory, 3.7, 3.8},
                                  {disk, 6.2, 5.0},
                                  {network, 3.9, 4.9},
                                  {gpu, 7.5, 7.8},
                                  {energy, 3.4, 10.4}}) {
    auto found = [](Token on, Appearance appearance) {
      return contrast(colorOf(on, appearance), colorOf(surface, appearance));
    };
    EXPECT_NEAR(found(ink, Appearance::light), light, 0.051) << nameOf(ink);
    EXPECT_NEAR(found(ink, Appearance::dark), dark, 0.051) << nameOf(ink);
  }
  EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 1e-9);
}

TEST_F(ThemeTests, tokensAndTonesBelongTogether) {
  std::set<std::string_view> names;
  for (std::size_t i = 0; i < tokenCount; ++i) names.insert(nameOf(static_cast<Token>(i)));
  EXPECT_EQ(names.size(), tokenCount);
  for (auto line : palette) {
    EXPECT_EQ(nameOf(fillOf(line)), std::string(nameOf(line)) + "Fill");
    EXPECT_EQ(nameOf(bandOf(line)), std::string(nameOf(line)) + "Band");
  }
  EXPECT_EQ(fillOf(Token::cyan), Token::hover) << "has none of its own";
  for (auto [tone, name] : {std::pair{Tone::good, "good"},
                            {Tone::info, "info"},
                            {Tone::warning, "warning"},
                            {Tone::critical, "critical"}}) {
    EXPECT_EQ(nameOf(lookOf(tone).text), name);
    EXPECT_EQ(nameOf(lookOf(tone).wash), std::string(name) + "Wash");
  }
}

TEST_F(ThemeTests, highContrastLeavesNothingFaint) {
  theme.set({.highContrast = true});
  EXPECT_EQ(theme.color(Token::text3), theme.color(Token::text1));
  EXPECT_EQ(theme.color(Token::hairline), theme.color(Token::border));
  EXPECT_EQ(theme.color(Token::warningWash), theme.color(Token::surface));
  EXPECT_EQ(theme.lineWidth(), 2);
}

TEST_F(ThemeTests, tellsChangesAloneAndOnlyToWhoStillListens) {
  std::vector<std::string> told;
  Subscription second;
  auto first = theme.observe([&] {
    told.emplace_back("first");
    second.reset();
  });
  second = theme.observe([&] { told.emplace_back("second"); });
  auto look = theme.look();
  theme.set(look);
  EXPECT_THAT(told, ElementsAre());
  look.appearance = Appearance::dark;
  theme.set(look);
  EXPECT_THAT(told, ElementsAre("first")) << "the second went before its turn";
  EXPECT_EQ(theme.duration(200), 0);
}

TEST_F(ThemeTests, textFollowsTheSystemsSize) {
  TextLabel label(theme, TextStyle::body, Token::text1, "Some words", nullptr);
  auto usual = label.sizeHint();
  theme.set({.textScale = 2});
  EXPECT_EQ(label.sizeHint().height(), 2 * usual.height());
  EXPECT_NEAR(label.sizeHint().width(), 2 * usual.width(), 3);
  theme.set({.textScale = 40});
  EXPECT_EQ(theme.look().textScale, 2.5) << "bounded";

  struct Desktop {
    double pixels, scale;
  };
  for (auto [pixels, scale] : {Desktop{13, 1}, {13.33, 1}, {44.0 / 3, 1}, {22, 1.5}, {9.75, 0.75}})
    EXPECT_NEAR(textScaleOf(pixels), scale, 1e-9) << pixels;
}

TEST_F(ThemeTests, aDesktopWithoutAChoiceGetsABetterFamily) {
  auto chosen = [](const char* desktop, std::set<QString> installed) {
    return utf8(chosenFamily(desktop, [&](const QString& family) { return installed.contains(family); }));
  };
  EXPECT_EQ(chosen("Cantarell", {"Inter"}), "Cantarell");
  EXPECT_EQ(chosen("DejaVu Sans", {"Noto Sans", "Inter"}), "Inter");
  EXPECT_EQ(chosen("Bitstream Vera Sans", {"Noto Sans"}), "Noto Sans");
  EXPECT_EQ(chosen("DejaVu Sans", {}), "DejaVu Sans");
}

} // namespace
} // namespace korvell
