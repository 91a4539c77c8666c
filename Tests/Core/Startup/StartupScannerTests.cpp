#include "Core/Startup/StartupScanner.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeTrash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum LaunchScope;
using testing::ElementsAre;
using testing::IsEmpty;

struct StartupScannerTests : testing::Test {
  FakeLaunchItems items;
  FakeTrash trash;

  std::vector<std::string> labels(bool StartupItem::*which) {
    std::vector<std::string> result;
    for (const auto& item : StartupScanner::scan(items))
      if (item.*which) result.push_back(item.label);
    return result;
  }
};

TEST_F(StartupScannerTests, leftoversComeFirstThenLabels) {
  items.existing = {"/opt/here"};
  for (const auto& [scope, name, program] :
       {std::tuple{user, "b.service", "/opt/here"}, std::tuple{user, "z.service", "/opt/gone"},
        std::tuple{allUsers, "a.service", "%h/x"}, std::tuple{LaunchScope::system, "Z.service", "/opt/here"},
        std::tuple{LaunchScope::system, "b.service", "/opt/here"},
        std::tuple{LaunchScope::system, "c.service", "gone"}})
    items.addUnit(scope, std::string("/units/") + name, program);
  items.launchFiles.push_back({user, LaunchFormat::propertyList, "/broken.plist", "broken", "", {}});
  std::vector<std::string> order;
  for (const auto& item : StartupScanner::scan(items)) order.push_back(item.label);
  EXPECT_THAT(order,
              ElementsAre("c.service", "z.service", "Z.service", "a.service", "b.service", "b.service"));
  EXPECT_THAT(labels(&StartupItem::isLeftover), ElementsAre("c.service", "z.service"));
  EXPECT_EQ(StartupScanner::scan(items)[4].scope, user) << "of equal labels the first one read stays first";
}

TEST_F(StartupScannerTests, whatTheManagersKnow) {
  items.addUnit(user, "/u/a.service", "/x");
  items.addUnit(allUsers, "/u/b.service", "/x");
  items.addUnit(LaunchScope::system, "/s/c.service", "/x");
  items.addUnit(LaunchScope::system, "/s/d.service", "/x");
  items.launchFiles.push_back(
      {user, LaunchFormat::desktopEntry, "/autostart/my-app.desktop", "[Desktop Entry]\nExec=/x\n", "", {}});
  const std::string generated = R"(app-my\x2dapp@autostart.service)";
  items.jobs.user = {.loaded = {"a.service", "b.service", "c.service", generated},
                     .enabled = {{"a.service", true}, {"b.service", false}, {generated, false}},
                     .silence = {}};
  items.jobs.system = {.loaded = {"d.service"}, .enabled = {{"a.service", false}}, .silence = {}};
  EXPECT_THAT(labels(&StartupItem::isLoaded),
              ElementsAre("a.service", "b.service", "d.service", "my-app.desktop"));
  EXPECT_THAT(labels(&StartupItem::runsAtLoad),
              ElementsAre("a.service", "c.service", "d.service", "my-app.desktop"))
      << "of b.service the manager knows better than its file";
}

struct RemovalTests : StartupScannerTests {
  RemovalTests() {
    auto& file = items.addUnit(user, "/units/a.service", "/opt/gone");
    file.location = "/real/units/a.service";
    item = StartupScanner::scan(items).front();
  }
  StartupItem item;
};

TEST_F(RemovalTests, theJobIsStoppedAndTheFileThatWasReadGoesToTheTrash) {
  EXPECT_TRUE(StartupScanner::remove(item, items, trash));
  EXPECT_THAT(items.log, ElementsAre("stop a.service", "removed /units/a.service"));
  EXPECT_THAT(trash.moved, ElementsAre("/real/units/a.service"));
  EXPECT_EQ(trash.requests.front().picked, (FileIdentity{1, 1}));
}

TEST_F(RemovalTests, whatIsNoLongerThatLeftoverIsLeftAlone) {
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"its program is back", [&] { items.existing = {"/opt/gone"}; }},
      {"it names no program", [&] { item.program.reset(); }},
      {"another program is gone", [&] { items.launchFiles[0].bytes = "[Service]\nExecStart=/opt/other"; }},
      {"it has gone", [&] { items.launchFiles.clear(); }},
      {"it belongs to the system", [&] { items.protection = "It belongs to the system."; }}};
  const auto files = items.launchFiles;
  const auto listed = item;
  for (const auto& [why, change] : changes) {
    items.launchFiles = files;
    items.existing.clear();
    item = listed;
    change();
    const auto outcome = StartupScanner::remove(item, items, trash);
    ASSERT_FALSE(outcome) << why;
    EXPECT_TRUE(!items.protection || outcome.reason() == *items.protection) << outcome.reason();
    EXPECT_TRUE(items.log.empty() && trash.requests.empty()) << why;
  }
}

TEST_F(RemovalTests, aFileThatStaysIsNotReportedAsGone) {
  items.launchFiles.push_back({user,
                               LaunchFormat::desktopEntry,
                               "/a.desktop",
                               "[Desktop Entry]\nExec=/opt/gone\n",
                               "/a.desktop",
                               {}});
  const char* said[] = {"The job was stopped, but its file /a.desktop is still there: The disk is full.",
                        "The job was disabled and stopped, but its file /units/a.service is still there: "
                        "The disk is full."};
  trash.refused = {{"/real/units/a.service", "The disk is full."}, {"/a.desktop", "The disk is full."}};
  const auto listed = StartupScanner::scan(items);
  for (std::size_t i = 0; i < std::size(said); ++i) {
    const auto outcome = StartupScanner::remove(listed.at(i), items, trash);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.reason(), said[i]);
  }
  EXPECT_THAT(items.log, ElementsAre("stop a.desktop", "stop a.service"));
}

TEST_F(RemovalTests, theQuestionNamesTheProgram) {
  for (const auto& [program, words] : {std::pair{std::optional<std::string>("/opt/gone"), "/opt/gone"},
                                       std::pair{std::optional<std::string>(), "a program"}}) {
    item.program = program;
    EXPECT_EQ(StartupScanner::confirmation(item),
              std::string("It launches ") + words +
                  " which no longer exists. The file goes to the Trash, so you can put it back.");
  }
}

} // namespace
} // namespace korvell
