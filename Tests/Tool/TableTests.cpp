#include "Tool/Table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(TableTests, wideCharactersAndControlBytesKeepTheColumnsAligned) {
  std::string sink;
  Terminal terminal(sink, 80);
  Table table({{"Name"}, {"Memory", Column::Align::right}});
  table.row({"日本", "1.00 GB"});
  table.row({"a\x1b[31mb", "10 B"});
  EXPECT_THAT(table.lines(terminal, 80),
              ElementsAre("Name         Memory", "日本        1.00 GB", "a\\x1b[31mb     10 B"));
}

TEST(TableTests, flexibleColumnsGiveWayDownToTheirMinimum) {
  std::string sink;
  Terminal terminal(sink, 20);
  Table table({{"", Column::Align::left, true, 5}, {"", Column::Align::right}});
  table.row({"a long name of an application", "100%"});
  for (int width : {30, 20, 12, 11}) {
    const auto lines = table.lines(terminal, width);
    EXPECT_EQ(inkedWidth(lines[0]), width) << lines[0];
  }
  EXPECT_EQ(table.lines(terminal, 5)[0], "a lo…  100%") << "never narrower than the minimum";
}

TEST(TableTests, whatATerminalCannotShowHasAPlainEquivalentOfTheSameWidth) {
  EXPECT_EQ(plainText("5 °C · 日 – ok…"), "5  C - ?? - ok.");
  for (double fraction : {-1.0, 0.0, 0.33, 0.5, 0.999, 1.0, 7.0}) {
    EXPECT_EQ(inkedWidth(bar(fraction, 10)), 10) << fraction;
    EXPECT_EQ(plainText(bar(fraction, 10)).size(), 10u) << fraction;
    EXPECT_EQ(inkedWidth(columnBar(fraction)), 1) << fraction;
  }
  EXPECT_EQ(plainText(bar(0.5, 4)), "##..");
}

TEST(TableTests, inkIsOnlyForTerminalsWithColours) {
  std::string sink;
  EXPECT_EQ(Terminal(sink, 80, true, false).ink(Ink::critical, "x"), "x");
  const auto red = Terminal(sink, 80, true, true).ink(Ink::critical, "x日");
  EXPECT_NE(red, "x日");
  EXPECT_EQ(inkedWidth(red), 3);
}

} // namespace
} // namespace korvell
