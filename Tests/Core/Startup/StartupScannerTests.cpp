#include "Core/Startup/StartupScanner.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeTrash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;

LaunchFile unit(LaunchScope scope, const std::string& name, const std::string& program) {
  return {scope, LaunchFormat::systemdService, "/units/" + name, "[Service]\nExecStart=" + program + "\n"};
}

std::vector<std::string> labels(const std::vector<StartupItem>& items) {
  std::vector<std::string> result;
  for (const auto& item : items) result.push_back(item.label + (item.isLeftover ? " (leftover)" : ""));
  return result;
}

TEST(StartupScannerTests, leftoversComeFirstThenLabels) {
  FakeLaunchItems items;
  items.existing = {"/opt/here"};
  items.launchFiles = {unit(LaunchScope::user, "b.service", "/opt/here"),
                       unit(LaunchScope::user, "z.service", "/opt/gone"),
                       unit(LaunchScope::allUsers, "a.service", "%h/x"),
                       unit(LaunchScope::system, "Z.service", "/opt/here"),
                       unit(LaunchScope::system, "b.service", "/opt/here"),
                       unit(LaunchScope::system, "c.service", "gone"),
                       {LaunchScope::user, LaunchFormat::propertyList, "/broken.plist", "broken"}};
  const auto scanned = StartupScanner::scan(items);
  EXPECT_THAT(labels(scanned), ElementsAre("c.service (leftover)", "z.service (leftover)", "Z.service",
                                           "a.service", "b.service", "b.service"));
  EXPECT_EQ(scanned[4].scope, LaunchScope::user) << "of equal labels the first one read stays first";
}

TEST(StartupScannerTests, whatIsLoaded) {
  FakeLaunchItems items;
  items.launchFiles = {unit(LaunchScope::user, "a.service", "/x"),
                       unit(LaunchScope::allUsers, "b.service", "/x"),
                       unit(LaunchScope::system, "c.service", "/x"),
                       unit(LaunchScope::system, "d.service", "/x"),
                       {LaunchScope::user, LaunchFormat::desktopEntry, "/autostart/my-app.desktop",
                        "[Desktop Entry]\nExec=/x\n"}};
  items.jobs = {.ofUser = {"a.service", "b.service", "c.service", R"(app-my\x2dapp@autostart.service)"},
                .ofSystem = {"d.service"}};
  std::vector<std::string> loaded;
  for (const auto& item : StartupScanner::scan(items))
    if (item.isLoaded) loaded.push_back(item.label);
  EXPECT_THAT(loaded, ElementsAre("a.service", "b.service", "d.service", "my-app.desktop"));
}

class RemovalTests : public testing::Test {
protected:
  FakeLaunchItems items;
  FakeTrash trash;
  const StartupItem item{.label = "a", .plistPath = "/units/a", .program = "/opt/gone"};
};

TEST_F(RemovalTests, theJobIsStoppedAndItsFileGoesToTheTrash) {
  EXPECT_TRUE(StartupScanner::remove(item, items, trash));
  EXPECT_THAT(items.log, ElementsAre("stop a", "removed /units/a"));
  EXPECT_THAT(trash.moved, ElementsAre("/units/a"));
}

TEST_F(RemovalTests, aProgramThatExistsAgainKeepsItsJob) {
  items.existing = {"/opt/gone"};
  EXPECT_FALSE(StartupScanner::remove(item, items, trash));
  EXPECT_FALSE(StartupScanner::remove({.label = "b", .plistPath = "/units/b"}, items, trash))
      << "names no program";
  EXPECT_TRUE(items.log.empty() && trash.moved.empty());
}

TEST_F(RemovalTests, whatMayNotBeRemovedIsLeftAlone) {
  items.protection = "It belongs to the system.";
  const auto outcome = StartupScanner::remove(item, items, trash);
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "It belongs to the system.");
  EXPECT_TRUE(items.log.empty() && trash.moved.empty());
}

TEST_F(RemovalTests, aFileThatStaysIsNotReportedAsGone) {
  trash.refused["/units/a"] = "The disk is full.";
  const auto outcome = StartupScanner::remove(item, items, trash);
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "The disk is full.");
  EXPECT_THAT(items.log, ElementsAre("stop a"));
}

TEST_F(RemovalTests, theQuestionNamesTheProgram) {
  EXPECT_EQ(StartupScanner::confirmation(item), "It launches /opt/gone which no longer exists. The file goes "
                                                "to the Trash, so you can put it back.");
  EXPECT_EQ(StartupScanner::confirmation({}),
            "It launches a program which no longer exists. The file goes to "
            "the Trash, so you can put it back.");
}

} // namespace
} // namespace korvell
