#include "App/ActionTexts.h"
#include "Core/Startup/StartupScanner.h"
#include "KeeperFixture.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeTrash.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

struct StartupCommandTests : KeeperFixture {
  FakeLaunchItems* items = nullptr;
  FakeTrash* trash = nullptr;

  StartupCommandTests() {
    auto world = std::make_unique<FakeLaunchItems>();
    items = world.get();
    items->existing = {"/opt/here"};
    items->addUnit(LaunchScope::user, "/u/gone.service", "/opt/gone");
    items->addUnit(LaunchScope::user, "/u/here.service", "/opt/here");
    items->addUnit(LaunchScope::user, "/u/twice.service", "/opt/gone");
    items->addUnit(LaunchScope::system, "/s/twice.service", "/opt/gone");
    host.launchItems = std::move(world);
    auto bin = std::make_unique<FakeTrash>();
    trash = bin.get();
    host.trash = std::move(bin);
  }
};

TEST_F(StartupCommandTests, leftoversAreListedFirst) {
  items->jobs.system.silence = "systemd does not run here.";
  EXPECT_EQ(run({"startup"}), exitOK);
  EXPECT_THAT(out, HasSubstr("gone.service   You            leftover          /opt/gone"));
  EXPECT_LT(out.find("twice.service"), out.find("here.service"));
  EXPECT_THAT(out, HasSubstr("Which of them are loaded is not known.\n"
                             "System daemon: systemd does not run here.\n"));
  EXPECT_EQ(run({"startup", "list", "--json"}), exitOK);
  std::vector<StartupItem> told;
  ASSERT_TRUE(fromValue(*parseJSON(out)->find("items"), told));
  EXPECT_EQ(told, StartupScanner::scan(*items));
  items->launchFiles.clear();
  EXPECT_EQ(run({"startup", "list"}), exitOK);
  EXPECT_EQ(out, "No startup items\n");
}

TEST_F(StartupCommandTests, aLeftoverGoesToTheTrash) {
  EXPECT_EQ(run({"startup", "remove", "/s/twice.service", "--yes"}), exitOK);
  EXPECT_EQ(run({"startup", "remove", "gone.service", "--yes"}), exitOK);
  EXPECT_EQ(out, "Moved /u/gone.service to the Trash.\n");
  EXPECT_THAT(trash->moved, ElementsAre("/s/twice.service", "/u/gone.service"));
  trash->refused["/u/twice.service"] = "It is in use.";
  EXPECT_EQ(run({"startup", "remove", "twice.service", "--yes"}), exitFailed);
  const std::string said =
      "The job was disabled and stopped, but its file /u/twice.service is still there: It is in use.";
  EXPECT_EQ(out + err, "korvell: " + said + "\n");
  EXPECT_EQ(run({"startup", "remove", "twice.service", "--yes", "--json"}), exitFailed);
  EXPECT_EQ(*parseJSON(out)->find("error")->asString(), said);
  trash->refused.clear();
  const auto item = toValue(StartupScanner::scan(*items).front());
  EXPECT_EQ(run({"startup", "remove", "twice.service", "--yes", "--json"}), exitOK);
  EXPECT_EQ(parseJSON(out), Value::object({{"item", item}, {"outcome", "trashed"}}));
}

TEST_F(StartupCommandTests, whatFilesSayReachesTheTerminalWithoutControls) {
  items->addUnit(LaunchScope::user, "/u/\x1b[2J.service", "/opt/\x1b[A");
  items->addUnit(LaunchScope::user, "/v/\x1b[2J.service", "/opt/\x1b[A");
  items->addUnit(LaunchScope::user, "/u/\x1b[3J.service", "/opt/here");
  trash->refused["/v/\x1b[2J.service"] = "In use: \x1b[B";
  std::string printed;
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{"\x1b[2J.service"},
                                                    {"/u/\x1b[2J.service"},
                                                    {"/u/\x1b[2J.service", "--yes"},
                                                    {"/v/\x1b[2J.service", "--yes"},
                                                    {"\x1b[3J.service"},
                                                    {"\x1b[4J.service"}}) {
    std::vector<std::string> words{"startup", "remove"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    run(words);
    printed += out + err;
  }
  EXPECT_THAT(printed, Not(HasSubstr("\x1b")));
  for (const char* text : {"called \\x1b[2J", "  /v/\\x1b[2J", "launches /opt/\\x1b[A", "Moved /u/\\x1b[2J",
                           "In use: \\x1b[B", "\\x1b[3J.service is no leftover", "item \\x1b[4J"})
    EXPECT_THAT(printed, HasSubstr(text));
}

TEST_F(StartupCommandTests, nothingElseIsRemoved) {
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"gone.service"}, "gone.service\nIt launches /opt/gone which no longer exists."}, // not confirmed
      {{"here.service", "--yes"}, "korvell: here.service is no leftover"},
      {{"none.service", "--yes"}, "korvell: There is no startup item none.service.\n"},
      {{"twice.service", "--yes"},
       "korvell: Several startup items are called twice.service; name one by its file:\n  /u/twice.service\n"
       "  /s/twice.service\n"}};
  for (auto [arguments, message] : rows) {
    arguments.insert(arguments.begin(), {"startup", "remove"});
    EXPECT_EQ(run(arguments), exitFailed);
    EXPECT_THAT(err, StartsWith(message));
  }
  EXPECT_EQ(run({"startup", "remove", "--yes"}), exitUsage);
  EXPECT_THAT(trash->requests, IsEmpty());
  EXPECT_THAT(items->log, IsEmpty());
}

TEST_F(StartupCommandTests, besideAKeeperItIsTheKeeperThatLooksAndRemoves) {
  const StartupItem known{.label = "k.service", .plistPath = "/k", .program = "/gone", .isLeftover = true};
  Outcome removed = success();
  actions.describing = [&](const ActionRequest& request) -> Result<DescribedAction> {
    return DescribedAction{request, describeRemoval(known)};
  };
  actions.performing = [&](const ActionRequest& request) -> ActionAnswer {
    if (std::holds_alternative<RemoveStartupItemRequest>(request)) return answerOf(known, removed);
    return {.worked = true, .json = Value::object({{"startupItems", toValue(std::vector{known})}})};
  };
  playKeeper([](const Value&) { return Value(); });
  EXPECT_EQ(run({"startup", "remove", "k.service", "--yes"}), exitOK);
  EXPECT_THAT(orders, ElementsAre(R"({"do":"rescanStartupItems","language":"en"})",
                                  R"({"do":"removeStartupItem","plistPath":"/k","label":"k.service",)"
                                  R"("program":"/gone","language":"en"})"));
  removed = Failure{"It is in use."};
  EXPECT_EQ(run({"startup", "remove", "k.service", "--yes"}), exitFailed);
  EXPECT_EQ(err, "korvell: It is in use.\n");
  EXPECT_THAT(trash->requests, IsEmpty());
}

} // namespace
} // namespace korvell
