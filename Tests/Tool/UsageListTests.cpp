#include "Tool/UsageList.h"

#include "Base/Text.h"
#include "Tool/Keys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

struct UsageListTests : testing::Test {
  std::string sink;
  Terminal terminal{sink, 80};
  UsageTable table{terminal, 80, UsageKey::cpu, {}, false};
  UsageList list;

  static std::vector<AppUsage> apps() {
    return {{.id = "a",
             .name = "Alpha",
             .processes = {{.pid = 10, .name = "alpha", .cpu = 1}, {.pid = 11, .name = "helper", .cpu = 4}}},
            {.id = "b", .name = "Beta", .processes = {{.pid = 20, .name = "beta", .cpu = 3, .memory = 9}}}};
  }
  /// The names alone, without the titles; the selection stands where the cursor does.
  std::vector<std::string> names(int height = 20) {
    constexpr std::string_view cursor = "›";
    std::vector<std::string> names;
    selection.clear();
    for (auto line : list.lines(table, height)) {
      const bool selected = line.starts_with(cursor);
      if (selected) line.erase(0, cursor.size());
      names.emplace_back(trimmed(line.substr(0, 20)));
      if (selected) selection = names.back();
    }
    names.erase(names.begin());
    return names;
  }
  std::string selection;
};

TEST_F(UsageListTests, applicationsUnfoldIntoTheirProcesses) {
  list.setApps(apps());
  EXPECT_THAT(names(), ElementsAre("+ Alpha (2)", "+ Beta"));
  EXPECT_TRUE(list.handleKey('\n'));
  EXPECT_THAT(names(), ElementsAre("− Alpha (2)", "11      helper", "10      alpha", "+ Beta"));
  list.setApps(apps());
  EXPECT_EQ(names().size(), 4u) << "stays unfolded";
  list.handleKey(Key::down); // on a process: folds its application
  EXPECT_TRUE(list.handleKey(Key::left));
  EXPECT_THAT(names(), ElementsAre("+ Alpha (2)", "+ Beta"));
  EXPECT_FALSE(list.handleKey('x'));
}

TEST_F(UsageListTests, theSelectionStaysWithWhatWasChosen) {
  list.setApps(apps());
  list.handleKey(Key::down); // Beta
  list.handleKey('m');       // Beta is first now
  list.handleKey(Key::right);
  EXPECT_THAT(names(), ElementsAre("− Beta", "20      beta", "+ Alpha (2)"));
  list.setApps({apps()[0]}); // Beta has ended
  EXPECT_THAT(names(), ElementsAre("+ Alpha (2)"));
  list.setApps({});
  EXPECT_TRUE(list.handleKey(Key::down));
  EXPECT_FALSE(list.handleKey(' '));
}

TEST_F(UsageListTests, theListScrollsWithTheSelection) {
  std::vector<AppUsage> many;
  for (int i = 10; i < 60; ++i)
    many.push_back({.id = std::to_string(i), .name = "app" + std::to_string(i), .processes = {{.pid = i}}});
  list.setApps(many);
  EXPECT_THAT(names(4), ElementsAre("+ app10", "+ app11", "+ app12"));
  list.handleKey(Key::end);
  EXPECT_THAT(names(4), ElementsAre("+ app57", "+ app58", "+ app59"));
  list.handleKey(Key::pageUp);
  EXPECT_THAT(names(4), ElementsAre("+ app56", "+ app57", "+ app58"));
  EXPECT_EQ(list.lines(table, 3).size(), 3u) << "three rows before the titles";
  EXPECT_TRUE(list.lines(table, 0).empty());
}

TEST_F(UsageListTests, namesAreSafeAndEveryLineFits) {
  const ProcessUsage process{.pid = 1, .name = "x\x1b[2J\n", .cpu = 1234.5, .memory = ~0ull, .netIn = 1e12};
  const AppUsage wide{.id = "w",
                      .name = "日本語の名前がとても長いアプリケーション日本語の名前がとても長い",
                      .processes = {process}};
  EXPECT_THAT(table.line(process), HasSubstr("1       x\\x1b[2J\\x0a"));
  for (const auto& line : {table.line(process), table.line(wide, true, "+ "), table.titles("Application")})
    EXPECT_LE(inkedWidth(line), 80) << line;
  EXPECT_EQ(inkedWidth(table.line(wide)), inkedWidth(table.line(process)));
}

} // namespace
} // namespace korvell
