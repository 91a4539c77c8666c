#include "App/Farewell.h"

#include "App/KeeperLock.h"
#include "App/SettingsCheck.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/FakeUsageHelper.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/FolderTrash.h"
#include "Tests/Fakes/PortableFileTree.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <unistd.h>

namespace korvell {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;

struct FarewellTests : testing::Test {
  TemporaryFolder home;
  Host host;
  FakeUsageHelper& helper;
  std::vector<std::string> commands;
  std::string package;       ///< that the program belongs to
  bool hasManager = true;    ///< the user's services can be asked
  bool disables = true;      ///< systemctl takes the unit's link away even without them
  std::string mainPID = "0"; ///< of the unit
  static constexpr const char* unit = "config/systemd/user/default.target.wants/korvell.service";

  FarewellTests() : helper(*new FakeUsageHelper) {
    const auto root = home.path().string();
    host.folders = {root,        root + "/data/korvell", root + "/config/korvell", root + "/run/korvell",
                    root + "/c", root + "/data",         root + "/config"};
    host.program = home / "bin/korvell";
    host.fileTree = std::make_unique<PortableFileTree>();
    host.trash = std::make_unique<FolderTrash>(home / "trash");
    host.usageHelper.reset(&helper);
    helper.current = UsageHelperStatus::notEnabled;
    home.write("bin/korvell", "");
    fs::create_directories(home / ".local/bin");
  }

  Farewell found(bool isAdministrator = false, bool withData = false) {
    const auto run = [this](const std::string& path, const std::vector<std::string>& arguments, Seconds,
                            const Cancellation&) -> std::optional<ShellResult> {
      if (path.ends_with("dpkg-query"))
        return ShellResult{.output = package + ": " + arguments.back(), .exitStatus = package.empty()};
      commands.push_back(path);
      if (arguments.at(1) == "show")
        return ShellResult{.output = mainPID + "\n", .exitStatus = hasManager ? 0 : 1};
      if (hasManager || disables) fs::remove(home / unit);
      return ShellResult{.exitStatus = hasManager ? 0 : 1};
    };
    runner = run;
    return farewell(host, fakeEnvironment({}), runner, isAdministrator, withData);
  }
  static std::vector<std::string> descriptions(const Farewell& farewell) {
    std::vector<std::string> texts;
    for (const auto& step : farewell.steps) texts.push_back(step.description);
    return texts;
  }
  CommandRunner runner;
};

TEST_F(FarewellTests, aMachineWithoutATraceHasNothingToDo) {
  const auto nothing = found();
  EXPECT_THAT(descriptions(nothing), IsEmpty());
  EXPECT_THAT(nothing.remarks, ElementsAre("The program itself stays at ~/bin/korvell."));
  package = "korvell";
  EXPECT_THAT(found().remarks, ElementsAre(HasSubstr("sudo apt purge korvell")));
  home.write("Cellar/korvell/1/bin/korvell", "");
  fs::create_symlink(home / "Cellar/korvell/1/bin/korvell", home / "korvell");
  host.program = home / "korvell";
  EXPECT_THAT(found().remarks, ElementsAre(HasSubstr("brew uninstall korvell")));
}

TEST_F(FarewellTests, whatIsThereIsTakenAwayAndNothingElse) {
  home.write(unit, "");
  home.write("config/autostart/korvell-widget.desktop", "");
  home.write("config/autostart/other.desktop", "theirs");
  home.write("run/korvell/keeper.sock", "");
  home.write("data/korvell/history.db", "years");
  home.write("config/korvell/settings.json", "{}");
  fs::create_symlink(host.program, home / ".local/bin/korvell");
  const auto farewell = found();
  EXPECT_THAT(descriptions(farewell),
              ElementsAre("Stop and disable the unit korvell.service.", "No longer show the widget at login.",
                          "Remove the link ~/.local/bin/korvell.", "Remove the empty folder ~/.local/bin.",
                          "Remove the socket " + (home / "run/korvell/keeper.sock") + ".",
                          "Remove the empty folder ~/run/korvell."));
  EXPECT_TRUE(farewell.stopsKeeper);
  EXPECT_THAT(farewell.remarks, Contains("~/data/korvell stays; --data moves it to the Trash."));
  EXPECT_THAT(commands, IsEmpty()) << "only looked so far";
  for (const auto& step : farewell.steps) EXPECT_TRUE(step.perform()) << step.description;
  EXPECT_THAT(commands, ElementsAre("/usr/bin/systemctl"));
  EXPECT_FALSE(fs::exists(home / ".local/bin"));
  EXPECT_FALSE(fs::exists(home / "run/korvell"));
  EXPECT_EQ(home.text("data/korvell/history.db"), "years");
  EXPECT_TRUE(fs::exists(host.program));
  EXPECT_TRUE(fs::exists(home / "config/autostart/other.desktop"));
}

TEST_F(FarewellTests, withoutTheUsersManagerTheUnitIsOnlyDisabled) {
  home.write(unit, "");
  hasManager = false;
  const auto farewell = found();
  EXPECT_TRUE(farewell.steps.front().perform()) << "its link is gone";
  home.write(unit, "");
  disables = false;
  EXPECT_FALSE(farewell.steps.front().perform());
}

TEST_F(FarewellTests, theFileForMetricsGoesWhereKorvellWroteIt) {
  const auto defaults = new FakeUserDefaults;
  host.defaults.reset(defaults);
  defaults->set(metricsFileKey, home / "korvell.prom");
  EXPECT_THAT(descriptions(found()), IsEmpty()) << "nothing was written";
  home.write("korvell.prom", "# HELP node_load1 of another\n");
  const auto stays = "~/korvell.prom, the file for metrics, holds something else and stays.";
  EXPECT_THAT(descriptions(found()), IsEmpty());
  EXPECT_THAT(found().remarks, Contains(stays));
  home.write("korvell.prom", "# HELP korvell_build_info The Korvell that tells these figures.\n");
  const auto farewell = found();
  ASSERT_THAT(descriptions(farewell), ElementsAre("Remove the file with metrics, ~/korvell.prom."));
  home.write("korvell.prom", "mine\n");
  EXPECT_EQ(farewell.steps.front().perform().reason(), stays) << "somebody else's by now";
  home.write("korvell.prom", "# HELP korvell_build_info The Korvell that tells these figures.\n");
  EXPECT_TRUE(farewell.steps.front().perform());
  EXPECT_FALSE(fs::exists(home / "korvell.prom"));
}

TEST_F(FarewellTests, theRuntimeFolderStaysWhereSomethingElseIsInIt) {
  home.write("run/korvell/keeper.sock", "");
  home.write("run/korvell/other", "theirs");
  EXPECT_THAT(descriptions(found()), ElementsAre(HasSubstr("Remove the socket")));
  fs::remove(home / "run/korvell/other");
  const auto farewell = found();
  home.write("run/korvell/other", "theirs"); // meanwhile
  for (const auto& step : farewell.steps) EXPECT_TRUE(step.perform());
  EXPECT_EQ(home.text("run/korvell/other"), "theirs");
}

TEST_F(FarewellTests, dataGoesToTheTrashAndALinkElsewhereStays) {
  home.write("data/korvell/history.db", "years");
  home.write("data/other", "theirs");
  home.write("bin2/korvell", "");
  fs::create_symlink(home / "bin2/korvell", home / ".local/bin/korvell");
  const auto farewell = found(false, true);
  ASSERT_THAT(descriptions(farewell), ElementsAre("Move ~/data/korvell to the Trash."));
  EXPECT_TRUE(farewell.steps.front().perform());
  EXPECT_EQ(home.text("trash/korvell-1/history.db"), "years");
  EXPECT_EQ(home.text("data/other"), "theirs");
}

TEST_F(FarewellTests, theHelperTakesAnAdministrator) {
  helper.current = UsageHelperStatus::enabled;
  EXPECT_THAT(descriptions(found()), IsEmpty());
  EXPECT_THAT(found().remarks, Contains(HasSubstr("sudo korvell helper disable")));
  const auto farewell = found(true);
  ASSERT_THAT(descriptions(farewell), ElementsAre("Stop and remove the usage helper."));
  EXPECT_TRUE(farewell.steps.front().perform());
  EXPECT_EQ(helper.current, UsageHelperStatus::notEnabled);
  helper.lies = true;
  helper.groupThere = "korvell";
  EXPECT_THAT(descriptions(found(true)), ElementsAre("Stop and remove the usage helper."))
      << "off, but there";
  EXPECT_THAT(found().remarks,
              IsSupersetOf({HasSubstr("sudo korvell helper disable"), HasSubstr("sudo groupdel korvell")}));
}

TEST_F(FarewellTests, foldersThatBecomeEmptyGoAndNoOthers) {
  home.write("config/autostart/korvell-widget.desktop", "");
  const auto farewell = found();
  ASSERT_THAT(descriptions(farewell), ElementsAre("No longer show the widget at login.",
                                                  "Remove the empty folder ~/config/autostart."));
  for (const auto& step : farewell.steps) EXPECT_TRUE(step.perform());
  EXPECT_FALSE(fs::exists(home / "config/autostart"));
  EXPECT_TRUE(fs::exists(home / ".local/bin")) << "nothing of it was Korvell's";
  home.write("elsewhere/korvell-widget.desktop", "");
  fs::create_symlink(home / "elsewhere", home / "config/autostart");
  EXPECT_THAT(descriptions(found()), ElementsAre("No longer show the widget at login.")) << "a link stays";
}

TEST_F(FarewellTests, whatRunsIsToldFirst) {
  EXPECT_EQ(stillRunning(host.folders), "");
  const auto lock = KeeperLock::acquire(host.folders);
  ASSERT_TRUE(lock);
  EXPECT_THAT(stillRunning(host.folders), AllOf(HasSubstr("is running"), HasSubstr("Quit it first")));
  EXPECT_EQ(found().running, stillRunning(host.folders));
  home.write(unit, "");
  EXPECT_NE(found().running, "") << "an application keeps, beside the unit";
  mainPID = std::to_string(getpid());
  EXPECT_EQ(found().running, "") << "the first step ends it";
  hasManager = false;
  EXPECT_NE(found().running, "") << "nobody can";
}

TEST_F(FarewellTests, aWidgetIsClosedBeforeItsDataGoes) {
  struct OneWidget final : WidgetCenter {
    void currentConfigurations(std::function<void(std::optional<std::size_t>)> answer) override { answer(1); }
    void reloadAllTimelines() override {}
  };
  host.widgetCenter = std::make_unique<OneWidget>();
  EXPECT_EQ(found().running, "") << "its data stays";
  EXPECT_THAT(found(false, true).running, HasSubstr("Close it first"));
}

} // namespace
} // namespace korvell
