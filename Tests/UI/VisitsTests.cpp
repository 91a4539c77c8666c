#include "UI/Window/Visits.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum SidebarItem;

TEST(VisitsTests, backAndForwardAsInABrowser) {
  Visits visits;
  EXPECT_EQ(visits.back(), std::nullopt);
  for (const auto item : {overview, cpu, cpu, memory}) visits.visit(item);
  EXPECT_EQ(visits.forward(), std::nullopt);
  EXPECT_EQ(visits.back(), cpu);
  visits.visit(cpu); // the window shows what it was told to show
  EXPECT_EQ(visits.forward(), memory);
  EXPECT_EQ(visits.back(), cpu);
  visits.visit(disk);
  EXPECT_EQ(visits.forward(), std::nullopt) << "what lay ahead is forgotten";
  EXPECT_EQ(visits.back(), cpu);
  EXPECT_EQ(visits.back(), overview);
  EXPECT_EQ(visits.back(), std::nullopt);
}

TEST(VisitsTests, eachVisitIsFoundWhereItWasLeft) {
  Visits visits;
  visits.keep({.top = 1, .range = 0, .moment = {}}); // nothing is shown yet
  visits.visit(cpu);
  const PagePlace far{.top = 400, .range = 2, .moment = Date{60}};
  visits.keep(far);
  visits.visit(memory);
  EXPECT_EQ(visits.place(), PagePlace());
  visits.visit(cpu);
  EXPECT_EQ(visits.place(), PagePlace()) << "another visit begins anew";
  visits.back();
  visits.back();
  EXPECT_EQ(visits.place(), far);
}

TEST(VisitsTests, theOldestGo) {
  Visits visits;
  for (std::size_t i = 0; i < Visits::most; ++i) visits.visit(i % 2 == 0 ? cpu : memory);
  visits.visit(disk);
  std::size_t count = 0;
  while (visits.back()) ++count;
  EXPECT_EQ(count, Visits::most - 1);
}

} // namespace
} // namespace korvell
