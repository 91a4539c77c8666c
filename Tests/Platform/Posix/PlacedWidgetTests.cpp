#include "Platform/Posix/PlacedWidget.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace korvell {
namespace {

TEST(PlacedWidgetTests, CountsThoseThatLive) {
  TemporaryFolder root;
  const auto folder = root / "Widget/Placed";
  EXPECT_EQ(PlacedWidget::count(folder), 0u);
  const auto nobody = PlacedWidget::stamp(folder);
  {
    const auto one = PlacedWidget::place(folder);
    const auto other = PlacedWidget::place(folder);
    ASSERT_TRUE(one && other);
    EXPECT_EQ(PlacedWidget::count(folder), 2u);
    EXPECT_NE(PlacedWidget::stamp(folder), nobody);
  }
  EXPECT_EQ(PlacedWidget::count(folder), 0u);
  EXPECT_TRUE(root.names("Widget/Placed").empty());
}

TEST(PlacedWidgetTests, OneThatWasKilledCountsNoMore) {
  TemporaryFolder root;
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const auto child = fork();
  if (child == 0) {
    const auto placed = PlacedWidget::place(root / "Placed");
    const char told = placed ? 'y' : 'n';
    if (write(ready[1], &told, 1) == 1) pause();
    _exit(0);
  }
  char told = 0;
  ASSERT_EQ(read(ready[0], &told, 1), 1);
  EXPECT_EQ(told, 'y');
  EXPECT_EQ(PlacedWidget::count(root / "Placed"), 1u);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  close(ready[0]);
  close(ready[1]);
  EXPECT_EQ(PlacedWidget::count(root / "Placed"), 0u);
  EXPECT_EQ(root.names("Placed").size(), 1u);
  const auto next = PlacedWidget::place(root / "Placed"); // takes what was left away
  EXPECT_EQ(root.names("Placed").size(), 1u);
  EXPECT_EQ(PlacedWidget::count(root / "Placed"), 1u);
}

TEST(PlacedWidgetTests, SaysWhereItCannotTell) {
  TemporaryFolder root;
  root.write("Placed", "no folder");
  EXPECT_FALSE(PlacedWidget::place(root / "Placed"));
  EXPECT_FALSE(PlacedWidget::count(root / "Placed"));
}

} // namespace
} // namespace korvell
