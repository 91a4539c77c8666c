#include "App/MenuBarLabel.h"
#include "App/StatusBar.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum MenuBarLabel::Symbol;

struct MenuBarTests : testing::Test {
  FakeUserDefaults defaults;
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  MenuBarState state{*main, defaults};
  std::vector<std::string> published;
  Subscription subscriptions[4] = {
      state.score.observe([this](int) { published.emplace_back("score"); }),
      state.cpu.observe([this](int) { published.emplace_back("cpu"); }),
      state.memory.observe([this](int) { published.emplace_back("memory"); }),
      state.cpuHistory.observe([this](const auto&) { published.emplace_back("history"); })};

  std::vector<std::string> update(int score, int cpu, int memory) {
    published.clear();
    state.update(score, cpu, memory, cpu + 0.5);
    return published;
  }
};

TEST_F(MenuBarTests, onlyWhatTheStyleShowsIsPublished) {
  EXPECT_THAT(update(90, 1, 20), ElementsAre("score"));
  defaults.set(menuBarStyleKey, "no style");
  EXPECT_THAT(update(90, 2, 22), IsEmpty()) << "the icon's";
  defaults.set(menuBarStyleKey, "score");
  EXPECT_THAT(update(80, 3, 23), ElementsAre("score"));
  defaults.set(menuBarStyleKey, "cpuAndMemory");
  EXPECT_THAT(update(80, 4, 24), ElementsAre("cpu", "memory"));
  EXPECT_THAT(update(80, 4, 25), ElementsAre("memory"));
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::cpuAndMemory).text, "4% · 25%");
  defaults.set(menuBarStyleKey, "graphs");
  EXPECT_THAT(update(80, 4, 25), ElementsAre("history"));
  EXPECT_THAT(*state.cpuHistory, ElementsAre(1.5, 2.5, 3.5, 4.5, 4.5, 4.5)) << "of every style";
  for (int i = 0; i < 20; ++i) update(80, i, 50);
  EXPECT_EQ(state.cpuHistory->size(), 14u);
  EXPECT_EQ(state.cpuHistory->front(), 6.5);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::graphs).drawing,
            MenuBarGraph::image(*state.cpuHistory, 0.5));
  defaults.set(menuBarStyleKey, "icon");
  update(80, 77, 88);
  defaults.set(menuBarStyleKey, "cpuAndMemory");
  state.styleChanged();
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::cpuAndMemory).text, "77% · 88%")
      << "before the next cycle";
}

TEST_F(MenuBarTests, theHeartFillsBelowSeventyFive) {
  update(75, 0, 0);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::icon), MenuBarLabel{.symbol = heart});
  update(74, 0, 0);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::icon), MenuBarLabel{.symbol = filledHeart});
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::score), (MenuBarLabel{.symbol = heart, .text = "74"}));
}

TEST_F(MenuBarTests, barsAndTheGaugeStayInsideTheImage) {
  using enum DrawingCommand::Kind;
  EXPECT_THAT(MenuBarGraph::image({0, 50, 250, -3}, 0.25).commands,
              ElementsAre(DrawingCommand{fill, {0, 1, 1.6, 1}}, DrawingCommand{fill, {2.2, 1, 1.6, 7}},
                          DrawingCommand{fill, {4.4, 1, 1.6, 14}}, DrawingCommand{fill, {3 * 2.2, 1, 1.6, 1}},
                          DrawingCommand{strokeRounded, {33.5, 1.5, 3.5, 13}, 1.2},
                          DrawingCommand{fill, {33.5, 1.5, 3.5, 3.25}}));
  EXPECT_EQ(MenuBarGraph::image({}, 7).commands.back().rectangle.height, 13);
  EXPECT_EQ(MenuBarGraph::image({}, -7).commands.back().rectangle.height, 0);
}

TEST_F(MenuBarTests, aLineForBarsWithoutATray) {
  const MenuBarFigures figures{61, 12, 40, {0, 50, 100, 250}};
  const HealthReport report{.score = 61, .insights = {{.title = "<Tom & \x1b[2J> keeps the CPU busy"}}};
  const auto line = [&](MenuBarStyle style, StatusBarFormat format) {
    return statusBarLine(figures, report, style, format);
  };
  using enum MenuBarStyle;
  using enum StatusBarFormat;
  EXPECT_EQ(line(icon, plain), "♥");
  EXPECT_EQ(line(score, plain), "♡ 61");
  EXPECT_EQ(line(cpuAndMemory, plain), "12% · 40%");
  EXPECT_EQ(line(graphs, plain), "▁▄██ ▃");
  EXPECT_EQ(line(score, tmux), "#[fg=#F0B252]♡ 61#[default]");
  EXPECT_EQ(line(score, i3bar), R"([{"name":"korvell","full_text":"♡ 61","color":"#F0B252"}])");
  EXPECT_EQ(
      line(score, waybar),
      R"({"text":"♡ 61","alt":"fair","tooltip":"Health 61: Fair\n&lt;Tom &amp; \\x1b[2J&gt; keeps the CPU )"
      R"(busy\nCPU 12%, memory 40%","class":"fair","percentage":61})");
  EXPECT_EQ(statusBarLine({}, {.score = 75}, score, i3blocks), R"({"name":"korvell","full_text":"♡ 0"})")
      << "a good score has the bar's own colour";
}

} // namespace
} // namespace korvell
