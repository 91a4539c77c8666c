#include "Base/Record.h"
#include "Core/DevServers/DevServer.h"
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
  std::map<std::int64_t, std::string> outcomes; ///< by process; others are refused
  int asked = 0;
  std::function<void()> whileAsking = [] {}; ///< happens between the first look and the second

  ServersCommandTests() {
    columns = 100;
    playKeeper([this](const Value& request) {
      if (request.find("ask") && ++asked == 2) whileAsking();
      if (request.find("ask"))
        return Value::object({{"ok", true}, {"hasSample", true}, {"projects", toValue(projects)}});
      const auto outcome = outcomes.find(*request.find("pid")->asInt());
      if (outcome == outcomes.end()) return Value::object({{"ok", false}, {"error", "no"}});
      return Value::object({{"ok", true}, {"outcome", outcome->second}});
    });
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
  outcomes = {{10, "killed"}, {20, "gone"}};
  EXPECT_EQ(run({"servers", "stop", "10"}), exitFailed) << "no terminal to ask on";
  EXPECT_THAT(err, HasSubstr("node will receive a stop signal."));
  EXPECT_EQ(run({"servers", "stop", "99", "--yes"}), exitFailed);
  EXPECT_EQ(run({"servers", "stop", "x", "--yes"}), exitUsage);
  EXPECT_TRUE(orders.empty());

  EXPECT_EQ(run({"servers", "stop", "10", "--yes"}), exitOK);
  EXPECT_EQ(out, "node (PID 10) did not stop by itself and was killed.\n");
  EXPECT_EQ(orders.at(0), R"({"do":"stopServer","pid":10,"startedAt":"2027-01-15T05:13:20.000Z"})");
  EXPECT_EQ(run({"servers", "stop", "20", "--yes", "--json"}), exitFailed);
  EXPECT_THAT(out, HasSubstr(R"("outcome":"gone")"));
}

TEST_F(ServersCommandTests, stopsTheIdleOnes) {
  outcomes = {{20, "ended"}};
  EXPECT_EQ(run({"servers", "stop-idle", "--yes"}), exitOK) << err;
  EXPECT_EQ(out, "1 server stopped. 50.0 MB freed.\n");
  EXPECT_EQ(orders.size(), 1u);

  projects[0].servers[0].lastActive = Date{1'799'990'000};
  outcomes = {{10, "denied"}, {20, "ended"}};
  EXPECT_EQ(run({"servers", "stop-idle", "--yes"}), exitFailed);
  EXPECT_EQ(out, "1 server stopped. 50.0 MB freed.\n");
  EXPECT_EQ(err, "korvell: node (PID 10) belongs to another user.\n");
  EXPECT_EQ(run({"servers", "stop-idle"}), exitFailed);
  EXPECT_THAT(err, HasSubstr("2 dev servers are running but idle. Stopping them frees 150 MB."));

  // Between the question and the answer one was put to work, and the other id went to a younger process.
  asked = 0;
  orders.clear();
  whileAsking = [this] {
    projects[0].servers[0].lastActive = clock.now();
    projects[1].servers[0].startedAt = Date{1'799'995'000};
  };
  EXPECT_EQ(run({"servers", "stop-idle", "--yes"}), exitOK);
  EXPECT_THAT(err, HasSubstr("node (PID 10) is no longer idle and was left alone."));
  EXPECT_THAT(err, HasSubstr("python3.11 (PID 20) is no longer idle and was left alone."));
  EXPECT_TRUE(orders.empty());
  projects.clear();
  EXPECT_EQ(run({"servers", "stop-idle"}), exitOK);
  EXPECT_EQ(out, "No dev server is idle.\n");
}

} // namespace
} // namespace korvell
