#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeTrash.h"
#include "Tool/Commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

struct StartupCommandTests : testing::Test {
  SystemClock clock;
  Host host{};
  std::string output, errors;
  Terminal out{output, 80}, err{errors, 80};
  Context context{host, clock, [](std::string_view) { return std::nullopt; }, out, err};
  FakeLaunchItems* items = nullptr;
  FakeTrash* trash = nullptr;

  StartupCommandTests() {
    auto world = std::make_unique<FakeLaunchItems>();
    items = world.get();
    items->existing = {"/opt/here"};
    add(LaunchScope::user, "/u/gone.service", "/opt/gone");
    add(LaunchScope::user, "/u/here.service", "/opt/here");
    add(LaunchScope::user, "/u/twice.service", "/opt/gone");
    add(LaunchScope::system, "/s/twice.service", "/opt/gone");
    host.launchItems = std::move(world);
    auto bin = std::make_unique<FakeTrash>();
    trash = bin.get();
    host.trash = std::move(bin);
  }
  void add(LaunchScope scope, const std::string& path, const std::string& program) {
    items->launchFiles.push_back(
        {scope, LaunchFormat::systemdService, path, "[Service]\nExecStart=" + program});
  }
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "startup");
    return runCommandLine(context, std::vector<Command>{startupCommand()}, arguments);
  }
};

TEST_F(StartupCommandTests, leftoversAreListedFirst) {
  EXPECT_EQ(run({}), exitOK);
  EXPECT_THAT(output, HasSubstr("gone.service   You            leftover           /opt/gone"));
  EXPECT_LT(output.find("twice.service"), output.find("here.service"));
  items->launchFiles.clear();
  output.clear();
  EXPECT_EQ(run({"list"}), exitOK);
  EXPECT_EQ(output, "No startup items\n");
}

TEST_F(StartupCommandTests, oneObjectOfJSON) {
  EXPECT_EQ(run({"list", "--json"}), exitOK);
  const auto first = parseJSON(output)->find("items")->asArray()->front();
  EXPECT_EQ(first.find("label")->asString()->c_str(), std::string("gone.service"));
  EXPECT_EQ(*first.find("scope")->asString(), "user");
  EXPECT_EQ(first.find("isLeftover")->asBool(), true);
}

TEST_F(StartupCommandTests, aLeftoverGoesToTheTrash) {
  EXPECT_EQ(run({"remove", "gone.service", "--yes"}), exitOK);
  EXPECT_THAT(trash->moved, ElementsAre("/u/gone.service"));
  EXPECT_EQ(run({"remove", "/s/twice.service", "--yes"}), exitOK);
  EXPECT_THAT(trash->moved, ElementsAre("/u/gone.service", "/s/twice.service"));
}

TEST_F(StartupCommandTests, nothingElseIsRemoved) {
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"remove", "gone.service"},
       "gone.service\nIt launches /opt/gone which no longer exists."}, // not confirmed
      {{"remove", "here.service", "--yes"}, "korvell: here.service is no leftover"},
      {{"remove", "none.service", "--yes"}, "korvell: there is no startup item none.service\n"},
      {{"remove", "twice.service", "--yes"},
       "korvell: several startup items are called twice.service; name one by its file:\n  /u/twice.service\n"
       "  /s/twice.service\n"},
  };
  for (const auto& [arguments, message] : rows) {
    errors.clear();
    EXPECT_EQ(run(arguments), exitFailed);
    EXPECT_THAT(errors, StartsWith(message));
  }
  EXPECT_EQ(run({"remove", "--yes"}), exitUsage);
  EXPECT_THAT(trash->moved, IsEmpty());
  EXPECT_THAT(items->log, IsEmpty());
}

TEST_F(StartupCommandTests, aFileThatStaysIsAFailure) {
  trash->refused["/u/gone.service"] = "It is in use.";
  EXPECT_EQ(run({"remove", "gone.service", "--yes"}), exitFailed);
  EXPECT_EQ(errors, "korvell: It is in use.\n");
  EXPECT_EQ(output, "");
}

} // namespace
} // namespace korvell
