#include "App/ActionTexts.h"
#include "Core/DevServers/DevServerRules.h"
#include "KeeperFixture.h"

namespace korvell {
namespace {

using testing::HasSubstr;

struct ServersCommandTests : KeeperFixture {
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
  std::map<std::int64_t, StopOutcome> outcomes; ///< by process

  ServersCommandTests() {
    columns = 100;
    actions.describing = [this](const ActionRequest& request) { return described(request); };
    actions.performing = [this](const ActionRequest& request) { return performed(request); };
    playKeeper([this](const Value&) {
      return Value::object({{"ok", true}, {"hasSample", true}, {"projects", toValue(projects)}});
    });
  }
  Result<DescribedAction> described(const ActionRequest& request) {
    if (std::holds_alternative<StopIdleServersRequest>(request)) {
      const auto idle = idleServers(projects, clock.now());
      return DescribedAction{StopIdleServersRequest{idle}, describeStopIdle(idle)};
    }
    const auto pid = std::get<StopServerRequest>(request).pid;
    for (const auto& project : projects)
      for (const auto& server : project.servers)
        if (server.pid == pid)
          return DescribedAction{StopServerRequest{pid, server.startedAt}, describeStop(server)};
    return Failure{"none\x1b"};
  }
  ActionAnswer performed(const ActionRequest& request) {
    if (const auto* one = std::get_if<StopServerRequest>(&request))
      return answerOf({.pid = one->pid, .name = "node"}, outcomes.at(one->pid));
    std::vector<StopOutcome> each;
    const auto servers = *std::get<StopIdleServersRequest>(request).servers;
    for (const auto& server : servers) each.push_back(outcomes.at(server.pid));
    return answerOf(servers, each, {});
  }
};

TEST_F(ServersCommandTests, listsWhatTheKeeperKnows) {
  EXPECT_EQ(run({"servers"}), exitOK);
  for (auto text : {"shop ", "3000,3001", "100 MB", "2%", "1 min", "~/shop/web", "blog\\x1b[2J",
                    "python3.11 (python)", "2 h 46 min"})
    EXPECT_THAT(out, HasSubstr(text));
  std::vector<DevProject> told;
  EXPECT_EQ(run({"servers", "list", "--json"}), exitOK);
  const auto json = parseJSON(out);
  ASSERT_TRUE(json && fromValue(*json->find("projects"), told));
  EXPECT_EQ(told, projects);
  EXPECT_EQ(json->find("idleKnown")->asBool(), true);
}

TEST_F(ServersCommandTests, stopsOneAfterAsking) {
  outcomes = {{10, StopOutcome::killed}, {20, StopOutcome::gone}};
  EXPECT_EQ(run({"servers", "stop", "10"}), exitFailed) << "no terminal to ask on";
  EXPECT_THAT(err, HasSubstr("node will receive a stop signal."));
  EXPECT_EQ(run({"servers", "stop", "99", "--yes"}), exitFailed);
  EXPECT_EQ(err, "korvell: none\\x1b\n");
  EXPECT_EQ(run({"servers", "stop", "x", "--yes"}), exitUsage);
  EXPECT_TRUE(orders.empty());

  EXPECT_EQ(run({"servers", "stop", "10", "--yes"}), exitOK);
  EXPECT_EQ(out, "node (PID 10) did not stop by itself and was killed.\n");
  EXPECT_EQ(orders.at(0),
            R"({"do":"stopServer","pid":10,"startedAt":"2027-01-15T05:13:20.000Z","language":"en"})");
  EXPECT_EQ(run({"servers", "stop", "20", "--yes", "--json"}), exitFailed);
  EXPECT_THAT(out, HasSubstr(R"("outcome":"gone")"));
}

TEST_F(ServersCommandTests, stopsTheIdleOnes) {
  outcomes = {{10, StopOutcome::denied}, {20, StopOutcome::ended}};
  EXPECT_EQ(run({"servers", "stop-idle", "--yes"}), exitOK) << err;
  EXPECT_EQ(out, "1 server stopped. 50.0 MB freed.\n");
  projects[0].servers[0].lastActive = Date{1'799'990'000};
  EXPECT_EQ(run({"servers", "stop-idle", "--yes"}), exitFailed);
  EXPECT_EQ(out, "1 server stopped. 50.0 MB freed.\n");
  EXPECT_EQ(err, "korvell: node (PID 10) belongs to another user.\n");
  orders.clear();
  EXPECT_EQ(run({"servers", "stop-idle"}), exitFailed);
  EXPECT_THAT(err,
              HasSubstr("2 dev servers are running but idle. Stopping them frees 150 MB.\n"
                        "  shop: node (PID 10), ports 3000, 3001\n  blog: python3.11 (PID 20), port 8000\n"));
  EXPECT_TRUE(orders.empty());
  projects.clear();
  EXPECT_EQ(run({"servers", "stop-idle"}), exitOK);
  EXPECT_EQ(out, "No dev server is idle.\n");
}

} // namespace
} // namespace korvell
