#include "Tests/App/AppFixture.h"
#include "UI/Tray/TrayForm.h"

namespace korvell {
namespace {

struct TrayFormTests : AppFixture {
  TrayForm form(MenuBarStyle style) {
    defaults.set(menuBarStyleKey, std::string(rawValue(style)));
    return trayForm(*model, style);
  }
  std::string tooltip(MenuBarStyle style) { return trayTooltip(form(style), *model->report); }
};

TEST_F(TrayFormTests, nothingIsClaimedBeforeTheFirstReport) {
  for (const auto& style : EnumTable<MenuBarStyle>::cases) {
    EXPECT_FALSE(form(style.value).score);
    EXPECT_FALSE(form(style.value).isFilled) << "a score of 0 is none";
    EXPECT_EQ(tooltip(style.value), "Korvell: measuring…");
    const auto label = menuBarLabel(form(style.value));
    EXPECT_EQ(label.symbol, MenuBarLabel::Symbol::heart);
    EXPECT_EQ(label.text, style.value == MenuBarStyle::icon ? std::nullopt : std::optional<std::string>("–"));
  }
}

TEST_F(TrayFormTests, eachStyleShowsAndSaysWhatItHas) {
  defaults.set(menuBarStyleKey, "graphs");
  time.run();
  time.advance(Seconds{2});
  ASSERT_TRUE(*model->hasSample);
  model->menuBar.score.set(74);
  model->menuBar.cpu.set(24);
  model->menuBar.memory.set(63);
  model->report.set({.score = 74, .insights = {}});

  EXPECT_TRUE(form(MenuBarStyle::icon).isFilled);
  EXPECT_FALSE(form(MenuBarStyle::score).isFilled);
  EXPECT_EQ(form(MenuBarStyle::score).score, 74);
  EXPECT_EQ(form(MenuBarStyle::graphs).bars, *model->menuBar.cpuHistory);
  EXPECT_EQ(tooltip(MenuBarStyle::icon), "Korvell: health 74, Fair.");
  EXPECT_EQ(tooltip(MenuBarStyle::cpuAndMemory), "Korvell: health 74, Fair. CPU 24%, memory 63%.");

  for (const auto& style : EnumTable<MenuBarStyle>::cases)
    EXPECT_EQ(menuBarLabel(form(style.value)), MenuBarLabel::make(model->menuBar, style.value))
        << "wide or square, it tells the same";

  const auto before = form(MenuBarStyle::icon);
  model->menuBar.cpu.set(90);
  EXPECT_EQ(form(MenuBarStyle::icon), before) << "what the style does not show sends no new picture";
}

} // namespace
} // namespace korvell
