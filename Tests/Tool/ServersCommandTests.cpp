// The servers command beside a keeper that a test plays.

#include "App/KeeperLock.h"
#include "App/LineServer.h"
#include "Base/Record.h"
#include "Core/DevServers/DevServer.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tool/Commands.h"

#include <gtest/gtest.h>
#include <map>

namespace korvell {
namespace {

struct ServersCommandTests : testing::Test {
  TemporaryFolder folder;
  Host host;
  FakeClock clock;
  std::vector<DevProject> projects{{"shop",
                                    {{.pid = 10,
                                      .name = "node",
                                      .project = "shop",
                                      .directory = folder / "shop/web",
                                      .runtime = "node",
                                      .ports = {3000, 3001},
                                      .memory = 100 << 20,
                                      .cpu = 2.4,
                                      .startedAt = Date{1'799'990'000},
                                      .lastActive = Date{1'799'999'940}}}},
                                   {"blog\x1b[2J",
                                    {{.pid = 20,
                                      .name = "python3.11",
                                      .project = "blog",
                                      .directory = folder / "blog",
                                      .runtime = "python",
                                      .ports = {8000},
                                      .memory = 50 << 20,
                                      .startedAt = Date{1'799'990'000.5},
                                      .lastActive = Date{1'799'990'000}}}}};
  std::map<int, std::string> outcomes; ///< by process; others are refused
  std::vector<std::string> actions;    ///< what the keeper was told to do
  std::optional<KeeperLock> lock;
  std::unique_ptr<LineServer> keeper;

  ServersCommandTests() {
    host.folders.home = folder.path().string();
    host.folders.data = folder / "data";
    auto acquired = KeeperLock::acquire(host.folders);
    lock.emplace(std::move(*acquired));
    keeper = LineServer::listen(
        keeperSocketPath(host.folders),
        [this](const std::string& line, const LineServer::Reply& reply) {
          const auto request = *parseJSON(line);
          if (request.find("ask"))
            return reply(dumpJSON(
                Value::object({{"ok", true}, {"hasSample", true}, {"projects", toValue(projects)}})));
          actions.push_back(line);
          const auto outcome = outcomes.find(int(*request.find("pid")->asInt()));
          if (outcome == outcomes.end()) return reply(R"({"ok":false,"error":"no"})");
          reply(dumpJSON(Value::object({{"ok", true}, {"outcome", outcome->second}})));
        },
        {}, isSameUser);
    lock->announce(keeperSocketPath(host.folders));
  }

  struct Ran {
    int status;
    std::string out, err;
  };
  Ran run(const std::vector<std::string>& arguments) {
    Ran ran{};
    Terminal out(ran.out, 100), err(ran.err, 100);
    Context context{host, clock, [](std::string_view) { return std::nullopt; }, out, err, nullptr};
    const std::vector<Command> commands{serversCommand()};
    ran.status = runCommandLine(context, commands, arguments);
    return ran;
  }
};

TEST_F(ServersCommandTests, listsWhatTheKeeperKnows) {
  const auto listed = run({"servers"});
  EXPECT_EQ(listed.status, 0);
  for (auto text : {"shop ", "3000,3001", "100 MB", "2%", "1 min", "~/shop/web", "blog\\x1b[2J",
                    "python3.11 (python)", "2 h 46 min"})
    EXPECT_NE(listed.out.find(text), std::string::npos) << text << " in\n" << listed.out;
  std::vector<DevProject> told;
  const auto json = parseJSON(run({"servers", "list", "--json"}).out);
  ASSERT_TRUE(json && fromValue(*json->find("projects"), told));
  EXPECT_EQ(told, projects);
  EXPECT_EQ(json->find("idleKnown")->asBool(), true);
}

TEST_F(ServersCommandTests, stopsOneAfterAsking) {
  outcomes = {{10, "killed"}, {20, "gone"}};
  const auto refused = run({"servers", "stop", "10"}); // no terminal to ask on
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("node (PID 10) will receive a stop signal."), std::string::npos) << refused.err;
  for (auto pid : {"11", "99"}) EXPECT_EQ(run({"servers", "stop", pid, "--yes"}).status, 1);
  EXPECT_EQ(run({"servers", "stop", "x", "--yes"}).status, 2);
  EXPECT_TRUE(actions.empty());

  const auto stopped = run({"servers", "stop", "10", "--yes"});
  EXPECT_EQ(stopped.status, 0);
  EXPECT_EQ(stopped.out, "node (PID 10) did not stop by itself and was killed.\n");
  EXPECT_EQ(actions.at(0), R"({"do":"stopServer","pid":10,"startedAt":"2027-01-15T05:13:20.000Z"})");
  const auto gone = run({"servers", "stop", "20", "--yes", "--json"});
  EXPECT_EQ(gone.status, 1);
  EXPECT_NE(gone.out.find(R"("outcome":"gone")"), std::string::npos);
}

TEST_F(ServersCommandTests, stopsTheIdleOnes) {
  outcomes = {{20, "ended"}};
  const auto stopped = run({"servers", "stop-idle", "--yes"});
  EXPECT_EQ(stopped.status, 0) << stopped.err;
  EXPECT_EQ(stopped.out, "1 server stopped. 50.0 MB freed.\n");
  EXPECT_EQ(actions.size(), 1u);

  projects[0].servers[0].lastActive = Date{1'799'990'000};
  outcomes = {{10, "denied"}, {20, "ended"}};
  const auto partly = run({"servers", "stop-idle", "--yes"});
  EXPECT_EQ(partly.status, 1);
  EXPECT_EQ(partly.out, "1 server stopped. 50.0 MB freed.\n");
  EXPECT_EQ(partly.err, "korvell: node (PID 10) belongs to another user.\n");
  EXPECT_NE(run({"servers", "stop-idle"})
                .err.find("2 dev servers are running but idle. Stopping them frees 150 MB."),
            std::string::npos);
  projects.clear();
  EXPECT_EQ(run({"servers", "stop-idle"}).out, "No dev server is idle.\n");
}

} // namespace
} // namespace korvell
