#include "Base/FileLock.h"
#include "Shared/KeeperFile.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Widget/WidgetFeed.h"
#include "Widget/WidgetPlace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using State = WidgetPage::State;

struct WidgetPageTests : testing::Test {
  FakeTimeZone zone;
  const Date made = *parseRFC3339("2026-03-02T14:58:30Z");
  WidgetSnapshot document{.date = made,
                          .score = 87,
                          .label = "Good",
                          .fixes = {{"Disk space is getting low", "41.2 GB free.", true, "storage"},
                                    {"A title", "why", false, "../etc?x"}},
                          .tiles = {{"cpu", "24%", "load 2.1", {3, 24}, 100},
                                    {"later", "?", "", {}, {}},
                                    {"network", "↓ 1.8 MB/s", "↑ 86 KB/s", {1e6, 2e6}, {}}},
                          .apps = {{"Firefox", {}, "3.12 GB", 1}}};

  WidgetPage page(double age, bool isMeasured) const {
    return widgetPage(document, {made + Seconds(age), zone, isMeasured});
  }
};

TEST_F(WidgetPageTests, ShowsWhatTheDocumentSays) {
  const auto shown = page(10, true);
  EXPECT_EQ(shown.state, State::shown);
  EXPECT_EQ(shown.score, 87);
  EXPECT_EQ(shown.asOf, "");
  EXPECT_EQ(shown.spoken, "Health 87 of 100, Good.");
  EXPECT_EQ(shown.fixes[0].link, "korvell://page/storage");
  EXPECT_EQ(shown.fixes[1].link, "korvell://page/overview") << "no plain word";
  ASSERT_EQ(shown.tiles.size(), 2u) << "a measure of a later version";
  EXPECT_EQ(shown.tiles[0].top, 100);
  EXPECT_EQ(shown.tiles[1].spoken, "Network, ↓ 1.8 MB/s, ↑ 86 KB/s");
  EXPECT_GT(shown.tiles[1].top, 2e6);
  EXPECT_EQ(shown.apps[0].id, "Firefox");
}

TEST_F(WidgetPageTests, MarksWhatIsOldAndSaysThatNobodyMeasures) {
  EXPECT_EQ(page(299, false).state, State::shown);
  EXPECT_EQ(page(299, false).asOf, "");
  EXPECT_EQ(page(300, true).asOf, "As of 14:58");
  EXPECT_EQ(page(300, true).state, State::shown);
  EXPECT_EQ(page(300, false).state, State::stopped);
  EXPECT_EQ(page(-86400, true).asOf, "As of 14:58") << "the clock was set back";
  const auto first = widgetPage(std::nullopt, {made, zone, true});
  EXPECT_EQ(first.state, State::waiting);
  EXPECT_EQ(first.tiles.size(), 4u);
  EXPECT_EQ(first.tiles[3].figure.number, "–");
  const auto never = widgetPage(std::nullopt, {made, zone, false});
  EXPECT_EQ(never.state, State::stopped);
  EXPECT_EQ(never.asOf, "");
}

TEST_F(WidgetPageTests, FiguresComeApart) {
  EXPECT_EQ(ledFigure("24%"), (LedFigure{"", {"24", "%"}}));
  EXPECT_EQ(ledFigure("9.84 GB"), (LedFigure{"", {"9.84", "GB"}}));
  EXPECT_EQ(ledFigure("↓ 1.8 MB/s"), (LedFigure{"↓", {"1.8", "MB/s"}}));
  EXPECT_EQ(ledFigure("–"), (LedFigure{"", {"–", ""}}));
  EXPECT_EQ(ledFigure(""), LedFigure());
}

TEST_F(WidgetPageTests, FollowsTheFileAndTheKeeper) {
  TemporaryFolder folder;
  UserFolders folders{.data = folder.path().string(), .config = folder / "config"};
  FakeClock clock;
  clock.wall = made + Seconds(60);
  WidgetFeed feed(folders, clock, zone);
  feed.read();
  EXPECT_EQ(feed.page().state, State::stopped);
  auto keeper = FileLock::acquire(keeperLockPath(folders), Seconds(0));
  EXPECT_EQ(feed.page().state, State::waiting);
  folder.write("Widget/widget.json", document.encoded());
  feed.read();
  EXPECT_EQ(feed.page().score, 87);
  EXPECT_EQ(feed.patience(), Seconds(240));
  folder.write("Widget/widget.json", "{");
  feed.read();
  EXPECT_EQ(feed.page().score, 87) << "what could be read last";
  clock.advance(feed.patience());
  EXPECT_EQ(feed.page().asOf, "As of 14:58");
  EXPECT_EQ(feed.page().state, State::shown);
  keeper.reset();
  EXPECT_EQ(feed.page().state, State::stopped);
}

TEST_F(WidgetPageTests, StaysWhereItWasPut) {
  TemporaryFolder folder;
  const UserFolders folders{.config = folder / "config"};
  EXPECT_EQ(WidgetPlace::load(folders), WidgetPlace());
  const WidgetPlace place{WidgetSize::small, -20, 40};
  ASSERT_TRUE(place.save(folders));
  EXPECT_EQ(WidgetPlace::load(folders), place);
  folder.write("config/widget.json", R"({"size":"gigantic","x":1})");
  EXPECT_EQ(WidgetPlace::load(folders), WidgetPlace());
}

} // namespace
} // namespace korvell
