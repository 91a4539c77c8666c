// status, alerts and report beside a keeper that a test plays.

#include "App/KeeperLock.h"
#include "App/LineServer.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/HealthReport.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tool/Commands.h"
#include "Tool/Findings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using testing::Not;
using Action = Insight::Action;

const HealthReport report{
    65,
    {{Insight::Severity::critical, "Disk\x1b[2J is almost full",
      "3.00 GB free. The system needs room for swap and updates.", 20,
      Action{.kind = Action::Kind::freeUpSpace}},
     {Insight::Severity::warning, "CPU busy for 10 minutes", "91% on average. Editor is the main load.", 15,
      Action{Action::Kind::quitApp, "/Editor", "Editor"}},
     {Insight::Severity::info, "Up for 15 days",
      "A restart clears leaked memory and applies pending updates.", 4, std::nullopt}}};

struct HealthCommandsTests : testing::Test {
  TemporaryFolder folder;
  Host host;
  FakeClock clock;
  std::optional<KeeperLock> lock;
  std::unique_ptr<LineServer> keeper;
  std::string out, err;

  HealthCommandsTests() {
    host.folders.home = folder.path().string();
    host.folders.data = folder / "data";
    host.defaults = std::make_unique<FakeUserDefaults>();
  }
  void startKeeper(Value state) {
    auto acquired = KeeperLock::acquire(host.folders);
    ASSERT_TRUE(acquired);
    lock.emplace(std::move(*acquired));
    state.set("ok", true);
    state.set("hasSample", true);
    keeper = LineServer::listen(
        keeperSocketPath(host.folders),
        [state](const std::string&, const LineServer::Reply& reply) { reply(dumpJSON(state)); }, {},
        isSameUser);
    ASSERT_TRUE(keeper);
    lock->announce(keeperSocketPath(host.folders));
  }
  int run(const std::vector<std::string>& arguments) {
    out.clear();
    err.clear();
    Terminal outTerminal(out, 60), errTerminal(err, 60);
    Context context{host,        clock,       [](std::string_view) { return std::optional<std::string>(); },
                    outTerminal, errTerminal, nullptr};
    return runCommandLine(context, allCommands(), arguments);
  }
};

TEST_F(HealthCommandsTests, statusTellsTheFindingsAndTheirFixes) {
  startKeeper(Value::object({{"snapshot", toValue(SystemSnapshot())}, {"report", reportValue(report)}}));
  EXPECT_EQ(run({"status"}), exitOK);
  EXPECT_THAT(out, testing::StartsWith("Health   65 Fair\n"
                                       "         ● Disk\\x1b[2J is almost full −20\n"
                                       "           3.00 GB free. The system needs room for swap and\n"
                                       "           updates.\n"
                                       "           → Free up space: korvell storage\n"
                                       "         ▲ CPU busy for 10 minutes −15\n"
                                       "           91% on average. Editor is the main load.\n"
                                       "           → Quit Editor\n"
                                       "         · Up for 15 days −4\n"
                                       "           A restart clears leaked memory and applies\n"
                                       "           pending updates.\n"
                                       "\nCPU "));
  EXPECT_THAT(out, Not(HasSubstr("korvell run"))) << "there is a keeper";
}

TEST_F(HealthCommandsTests, statusAsJSONAndAsACheck) {
  startKeeper(Value::object({{"snapshot", toValue(SystemSnapshot())}, {"report", reportValue(report)}}));
  EXPECT_EQ(run({"status", "--json", "--check", "65"}), exitOK);
  const auto json = *parseJSON(out);
  EXPECT_EQ(json.find("score")->asInt(), 65);
  EXPECT_EQ(*json.find("label")->asString(), "Fair");
  EXPECT_EQ(json.find("keeper")->asBool(), true);
  const auto& insights = *json.find("insights")->asArray();
  ASSERT_EQ(insights.size(), 3u);
  EXPECT_EQ(
      dumpJSON(insights[1]),
      R"({"severity":"warning","title":"CPU busy for 10 minutes","detail":"91% on average. Editor is the )"
      R"(main load.","penalty":15,"action":{"kind":"quitApp","bundlePath":"/Editor","name":"Editor"}})");
  EXPECT_EQ(run({"status", "--check", "66"}), exitFailed);
}

TEST_F(HealthCommandsTests, alertsComeFromTheKeeper) {
  EXPECT_EQ(run({"alerts"}), exitFailed);
  EXPECT_THAT(err, HasSubstr("need a running Korvell"));
  const HealthAlert alert{
      .id = "1", .kind = HealthAlert::Kind::cpu, .title = "A\tis busy", .detail = "11%", .date = {1.8e9}};
  Value state;
  state.set("alerts", toValue(std::vector<HealthAlert>{alert}));
  startKeeper(std::move(state));
  EXPECT_EQ(run({"alerts"}), exitOK);
  EXPECT_THAT(out, HasSubstr("\nA\\x09is busy\n11%\n"));
  EXPECT_EQ(run({"alerts", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"({"alerts":[{"id":"1","kind":"cpu","title":"A\tis busy")"));
}

TEST_F(HealthCommandsTests, switches) {
  EXPECT_EQ(run({"alerts", "off", "disk"}), exitOK);
  EXPECT_FALSE(host.defaults->boolean("alert.disk", true));
  EXPECT_THAT(out, HasSubstr("disk            off"));
  EXPECT_EQ(run({"alerts", "on", "disk"}), exitOK);
  EXPECT_TRUE(host.defaults->boolean("alert.disk", false));
  EXPECT_EQ(run({"alerts", "on", "cheese"}), exitUsage);
  EXPECT_EQ(run({"report", "off"}), exitOK);
  EXPECT_FALSE(host.defaults->boolean("weeklyReport.enabled", true));
  static_cast<FakeUserDefaults&>(*host.defaults).readOnly = true;
  EXPECT_EQ(run({"alerts", "off", "disk"}), exitFailed);
  EXPECT_EQ(run({"report", "on"}), exitFailed);
}

TEST_F(HealthCommandsTests, theReportReadsTheHistoryAndSendsNothing) {
  EXPECT_EQ(run({"report"}), exitOK);
  EXPECT_THAT(out, HasSubstr("No health score was recorded"));
  EXPECT_TRUE(static_cast<FakeUserDefaults&>(*host.defaults).changed.empty());
  EXPECT_FALSE(std::filesystem::exists(host.folders.data + "/history.sqlite"));
}

} // namespace
} // namespace korvell
