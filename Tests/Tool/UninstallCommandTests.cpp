#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/PortableFileTree.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include "Agents/Metrics.h"
#include "App/KeeperLock.h"
#include "App/SettingsCheck.h"
#include "CommandFixture.h"

#include <filesystem>

namespace korvell {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct StubbornLogin final : LoginItem {
  bool isEnabled() const override { return true; }
  Outcome setEnabled(bool) override { return Failure{"The entry is stuck."}; }
};

struct UninstallCommandTests : CommandFixture {
  TemporaryFolder home;
  const std::string socket = home / "run/keeper.sock";

  UninstallCommandTests() {
    const auto root = home.path().string();
    host.folders = {root, root + "/data", root + "/config", root + "/run", root, root, root};
    host.fileTree = std::make_unique<PortableFileTree>();
    host.defaults = std::make_unique<FakeUserDefaults>();
    home.write("run/keeper.sock", "");
  }
  int uninstall(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "uninstall");
    return run({uninstallCommand()}, arguments);
  }
  Value json() const { return parseJSON(output).value_or(Value()); }
};

TEST_F(UninstallCommandTests, asksAndTellsWhatWasDone) {
  EXPECT_EQ(uninstall({}), exitFailed) << "nobody can be asked";
  EXPECT_THAT(errors,
              AllOf(HasSubstr("Take Korvell away?\n  Remove the socket " + socket), HasSubstr("--yes")));
  EXPECT_EQ(uninstall({"--yes=false"}), exitUsage);
  EXPECT_EQ(uninstall({"--dry-run"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Nothing was done. This is what would be:\n  Remove the socket "));
  ASSERT_TRUE(fs::exists(socket));
  EXPECT_EQ(uninstall({"--yes"}), exitOK);
  EXPECT_THAT(output, HasSubstr("This was done:\n  Remove the socket "));
  EXPECT_FALSE(fs::exists(home / "run"));
  EXPECT_EQ(uninstall({}), exitOK) << "nothing to ask about";
  EXPECT_EQ(output, "There is nothing to take away.\n");
}

TEST_F(UninstallCommandTests, aStepThatFailsIsToldWithWhatWasDone) {
  host.loginItem = std::make_unique<StubbornLogin>();
  EXPECT_EQ(uninstall({"--yes", "--json"}), exitFailed);
  EXPECT_EQ(*json().find("error")->asString(), "The entry is stuck.");
  EXPECT_EQ(json().find("steps")->asArray()->size(), 3U);
  EXPECT_EQ(json().find("done")->asArray()->size(), 2U);
  EXPECT_FALSE(fs::exists(socket)) << "the others go on";
  EXPECT_EQ(uninstall({"--yes"}), exitFailed);
  EXPECT_EQ(output, "") << "nothing was done";
  EXPECT_EQ(errors, "korvell: The entry is stuck.\n");
}

TEST_F(UninstallCommandTests, whatRunsStandsInTheWayBeforeAnythingIsAsked) {
  const auto lock = KeeperLock::acquire(host.folders);
  ASSERT_TRUE(lock);
  EXPECT_EQ(uninstall({}), exitFailed);
  EXPECT_THAT(errors,
              AllOf(HasSubstr("Quit it first. Nothing was done."), Not(HasSubstr("Take Korvell away?"))));
  EXPECT_EQ(uninstall({"--dry-run"}), exitOK);
  EXPECT_THAT(output, AllOf(testing::StartsWith("Korvell is running"), HasSubstr("Remove the socket")));
  EXPECT_EQ(uninstall({"--dry-run", "--json"}), exitOK);
  EXPECT_THAT(*json().find("running")->asString(), HasSubstr("Quit it first."));
  EXPECT_TRUE(fs::exists(socket));
}

TEST_F(UninstallCommandTests, theMetricsAreKnownByTheirBeginning) {
  const auto file = home / "korvell.prom";
  host.defaults->set(metricsFileKey, file);
  home.write("korvell.prom", metricsText({}, MetricsFormat::prometheus, "1"));
  EXPECT_EQ(uninstall({"--yes"}), exitOK);
  EXPECT_FALSE(fs::exists(file));
}

} // namespace
} // namespace korvell
