#include "Core/Startup/StartupScanner.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeTrash.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum LaunchScope;
using testing::ElementsAre;

struct StartupScannerTests : testing::Test {
  FakeLaunchItems items;
  FakeTrash trash;

  static std::vector<std::string> labels(const std::vector<StartupItem>& listed,
                                         bool StartupItem::*which = nullptr) {
    std::vector<std::string> result;
    for (const auto& item : listed)
      if (!which || item.*which) result.push_back(item.label);
    return result;
  }
  void addEntry(const std::string& path, const std::string& program) {
    items.launchFiles.push_back(
        {user, LaunchFormat::desktopEntry, path, "[Desktop Entry]\nExec=" + program, path, {}});
  }
};

TEST_F(StartupScannerTests, leftoversComeFirstThenLabels) {
  items.existing = {"/opt/here"};
  items.addUnit(user, "/units/b.service", "/opt/here");
  items.addUnit(user, "/units/z.service", "/opt/gone");
  items.addUnit(allUsers, "/units/a.service", "%h/x");
  items.addUnit(LaunchScope::system, "/units/c.service", "gone");
  items.launchFiles.push_back({user, LaunchFormat::propertyList, "/broken.plist", "broken", "", {}});
  auto listed = StartupScanner::scan(items);
  EXPECT_THAT(labels(listed), ElementsAre("c.service", "z.service", "a.service", "b.service"));
  EXPECT_THAT(labels(listed, &StartupItem::isLeftover), ElementsAre("c.service", "z.service"));
  EXPECT_FALSE(StartupScanner::refreshLeftovers(listed, items));
  items.existing = {"/opt/gone"};
  EXPECT_TRUE(StartupScanner::refreshLeftovers(listed, items));
  EXPECT_THAT(labels(listed), ElementsAre("b.service", "c.service", "a.service", "z.service"));
}

TEST_F(StartupScannerTests, aScopesManagerKnowsBetterThanTheFile) {
  items.addUnit(user, "/u/a.service", "/x");
  items.addUnit(allUsers, "/u/b.service", "/x");
  items.addUnit(LaunchScope::system, "/s/c.service", "/x");
  addEntry("/autostart/my-app.desktop", "/x"); // the file alone says when it runs
  items.jobs.user = {.loaded = {"a.service", "c.service", R"(app-my\x2dapp@autostart.service)"},
                     .enabled = {{"a.service", true}, {"b.service", false}, {"my-app.desktop", false}},
                     .silence = {}};
  items.jobs.system = {.loaded = {"b.service"}, .enabled = {{"a.service", false}}, .silence = {}};
  const auto listed = StartupScanner::scan(items);
  EXPECT_THAT(labels(listed, &StartupItem::isLoaded), ElementsAre("a.service", "my-app.desktop"));
  EXPECT_THAT(labels(listed, &StartupItem::runsAtLoad),
              ElementsAre("a.service", "c.service", "my-app.desktop"));
}

TEST_F(StartupScannerTests, whatItsManagerHasInUseIsNoLeftover) {
  items.existing = {"/opt/here"};
  const struct {
    const char* what;
    EffectiveJob told;
    bool isLeftover;
  } rows[] = {
      {"it starts nothing that exists", {.programs = {"/opt/gone", "/opt/gone too"}}, true},
      {"another file goes before it",
       {.isThisFile = false, .isActive = true, .programs = {"/opt/here"}},
       true},
      {"it runs", {.isActive = true, .programs = {"/opt/gone"}}, false},
      {"a drop-in elsewhere has it start another program", {.programs = {"/opt/gone", "/opt/here"}}, false},
      {"its programs are in an image", {.looksElsewhere = true, .programs = {"/opt/gone"}}, false},
      {"it starts nothing", {}, false}};
  for (const auto& row : rows) {
    items.launchFiles.clear();
    items.addUnit(allUsers, "/units/a.service", "/opt/gone");
    items.effectiveJobs = {{"/units/a.service", row.told}};
    const auto listed = StartupScanner::scan(items);
    EXPECT_EQ(listed.front().isLeftover, row.isLeftover) << row.what;
    EXPECT_EQ(bool(StartupScanner::remove(listed.front(), items, trash)), row.isLeftover) << row.what;
  }
  // Only what the manager lists as active tells about an entry.
  items.launchFiles.clear();
  addEntry("/autostart/my-app.desktop", "/opt/gone");
  items.jobs.user.active = {R"(app-my\x2dapp@autostart.service)"};
  EXPECT_FALSE(StartupScanner::scan(items).front().isLeftover);
  // One that runs and does not answer may have anything in use; where none runs, the files decide.
  items.launchFiles.clear();
  items.addUnit(allUsers, "/units/a.service", "/opt/gone");
  items.effectiveJobs.clear();
  for (const bool mayRun : {true, false}) {
    items.jobs.user = {.silence = "systemd did not answer in time.", .mayRun = mayRun};
    const auto listed = StartupScanner::scan(items);
    EXPECT_EQ(listed.front().isLeftover, !mayRun);
    const auto removed = StartupScanner::remove(listed.front(), items, trash);
    EXPECT_EQ(removed ? "" : removed.reason(),
              mayRun ? "systemd did not answer in time. Whether a.service is in use is not "
                       "known, so it stays."
                     : "");
  }
}

TEST_F(StartupScannerTests, managersAreAskedOnceAboutAProgramThatHasGone) {
  items.existing = {"/opt/a", "/opt/b"};
  items.addUnit(user, "/units/a.service", "/opt/a");
  items.addUnit(LaunchScope::system, "/units/b.service", "/opt/b");
  items.effectiveJobs = {{"/units/a.service", {.isActive = true, .programs = {"/opt/a"}}}};
  items.jobs.system.silence = "systemd does not run here.";
  auto listed = StartupScanner::scan(items);
  EXPECT_FALSE(StartupScanner::refreshLeftovers(listed, items));
  EXPECT_THAT(items.asked, testing::IsEmpty());
  items.existing = {};
  EXPECT_TRUE(StartupScanner::refreshLeftovers(listed, items));
  EXPECT_FALSE(StartupScanner::refreshLeftovers(listed, items));
  EXPECT_THAT(labels(listed, &StartupItem::isLeftover), ElementsAre("b.service"));
  EXPECT_THAT(items.asked, ElementsAre("a.service"));
}

TEST_F(StartupScannerTests, theJobIsStoppedAndTheFileThatWasReadGoesToTheTrash) {
  addEntry("/a.desktop", "/opt/gone");
  items.addUnit(user, "/units/b.service", "/opt/gone").location = "/real/b.service";
  const auto listed = StartupScanner::scan(items);
  trash.refused = {{"/real/b.service", "The disk is full."}, {"/a.desktop", "The disk is full."}};
  const char* said[] = {"The job was stopped, but its file /a.desktop is still there: The disk is full.",
                        "The job was disabled and stopped, but its file /units/b.service is still there: "
                        "The disk is full."};
  for (std::size_t i = 0; i < std::size(said); ++i)
    EXPECT_EQ(StartupScanner::remove(listed.at(i), items, trash).reason(), said[i]);
  EXPECT_THAT(items.log, ElementsAre("stop a.desktop", "stop b.service"));

  trash = {};
  items.log.clear();
  ASSERT_TRUE(StartupScanner::remove(listed.at(1), items, trash));
  EXPECT_THAT(items.log, ElementsAre("stop b.service", "removed /units/b.service"));
  EXPECT_THAT(trash.moved, ElementsAre("/real/b.service"));
  EXPECT_EQ(trash.requests.front().picked, (FileIdentity{1, 2}));
}

TEST_F(StartupScannerTests, whatIsNoLongerThatLeftoverIsLeftAlone) {
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"its program is back", [&] { items.existing = {"/opt/gone"}; }},
      {"another program is gone", [&] { items.launchFiles[0].bytes = "[Service]\nExecStart=/opt/other"; }},
      {"it has gone", [&] { items.launchFiles.clear(); }},
      {"it belongs to the system", [&] { items.protection = "It belongs to the system."; }}};
  for (const auto& [why, change] : changes) {
    items = {};
    items.addUnit(user, "/units/a.service", "/opt/gone");
    const auto listed = StartupScanner::scan(items).front();
    change();
    const auto outcome = StartupScanner::remove(listed, items, trash);
    ASSERT_FALSE(outcome) << why;
    EXPECT_EQ(outcome.reason() == "It belongs to the system.", items.protection.has_value());
    EXPECT_TRUE(items.log.empty() && trash.requests.empty()) << why;
  }
}

} // namespace
} // namespace korvell
