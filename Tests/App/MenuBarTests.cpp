#include "App/MenuBarLabel.h"

#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using Symbol = MenuBarLabel::Symbol;

struct MenuBarTests : testing::Test {
  FakeUserDefaults defaults;
  MenuBarState state{&defaults};
  std::vector<std::string> published;
  Subscription subscriptions[4] = {
      state.score.observe([this](int) { published.emplace_back("score"); }),
      state.cpu.observe([this](int) { published.emplace_back("cpu"); }),
      state.memory.observe([this](int) { published.emplace_back("memory"); }),
      state.cpuHistory.observe([this](const std::vector<double>&) { published.emplace_back("history"); })};

  std::vector<std::string> update(int score, int cpu, int memory) {
    published.clear();
    state.update(score, cpu, memory, cpu + 0.5);
    return published;
  }
};

TEST_F(MenuBarTests, onlyWhatTheStyleShowsIsPublished) {
  EXPECT_THAT(update(90, 10, 20), ElementsAre("score"));
  EXPECT_THAT(update(90, 11, 21), ElementsAre());
  defaults.set(menuBarStyleKey, "no style");
  EXPECT_THAT(update(90, 12, 22), ElementsAre()) << "the icon's";
  defaults.set(menuBarStyleKey, "score");
  EXPECT_THAT(update(80, 13, 23), ElementsAre("score"));
  defaults.set(menuBarStyleKey, "cpuAndMemory");
  EXPECT_THAT(update(80, 14, 24), ElementsAre("cpu", "memory"));
  EXPECT_THAT(update(80, 14, 25), ElementsAre("memory"));
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::cpuAndMemory).text, "14% · 25%");
  defaults.set(menuBarStyleKey, "graphs");
  EXPECT_THAT(update(80, 14, 25), ElementsAre("history"));
  EXPECT_THAT(*state.cpuHistory, ElementsAre(10.5, 11.5, 12.5, 13.5, 14.5, 14.5, 14.5)) << "of every style";
}

TEST_F(MenuBarTests, theHistoryKeepsFourteen) {
  defaults.set(menuBarStyleKey, "graphs");
  for (int i = 0; i < 20; ++i) update(80, i, 50);
  ASSERT_EQ(state.cpuHistory->size(), 14u);
  EXPECT_EQ(state.cpuHistory->front(), 6.5);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::graphs).drawing,
            MenuBarGraph::image(*state.cpuHistory, 0.5));
}

TEST_F(MenuBarTests, theHeartFillsBelowSeventyFive) {
  update(75, 0, 0);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::icon), MenuBarLabel{.symbol = Symbol::heart});
  update(74, 0, 0);
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::icon), MenuBarLabel{.symbol = Symbol::filledHeart});
  EXPECT_EQ(MenuBarLabel::make(state, MenuBarStyle::score),
            (MenuBarLabel{.symbol = Symbol::heart, .text = "74"}));
}

TEST(MenuBarGraphTests, geometry) {
  const auto drawing = MenuBarGraph::image({0, 50, 250, -3}, 0.25);
  EXPECT_EQ(drawing.width, 38);
  EXPECT_EQ(drawing.height, 16);
  using Kind = DrawingCommand::Kind;
  EXPECT_THAT(drawing.commands, ElementsAre(DrawingCommand{Kind::fill, {0, 1, 1.6, 1}},
                                            DrawingCommand{Kind::fill, {2.2, 1, 1.6, 7}},
                                            DrawingCommand{Kind::fill, {4.4, 1, 1.6, 14}},
                                            DrawingCommand{Kind::fill, {3 * 2.2, 1, 1.6, 1}},
                                            DrawingCommand{Kind::strokeRounded, {33.5, 1.5, 3.5, 13}, 1.2},
                                            DrawingCommand{Kind::fill, {33.5, 1.5, 3.5, 3.25}}));
  EXPECT_EQ(MenuBarGraph::image({}, 7).commands.back().rectangle.height, 13);
  EXPECT_EQ(MenuBarGraph::image({}, -7).commands.back().rectangle.height, 0);
}

} // namespace
} // namespace korvell
