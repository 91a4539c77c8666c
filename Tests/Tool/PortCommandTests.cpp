#include "KeeperFixture.h"
#include "Tests/Fakes/FakeProcessTable.h"

#include <filesystem>

namespace korvell {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct PortCommandTests : KeeperFixture {
  FakeProcessTable* table = nullptr;
  Date startOfServer{1'799'990'000};

  PortCommandTests() {
    auto made = std::make_unique<FakeProcessTable>();
    table = made.get();
    host.processes = std::move(made);
    std::filesystem::create_directories(folder / "shop/.git");
    auto& server = table->add(10, "node");
    server.counters.start = std::uint64_t(startOfServer.sinceEpoch);
    server.directory = folder / "shop";
    table->add(20, "database\x1b[2J");
    table->ports = {{10, {3000, 3001}}, {20, {5432}}};
    table->hiddenPort = 631;
  }
  void playServer(Date startedAt) {
    playKeeper([=, this](const Value&) {
      const std::vector<DevProject> projects{{"shop",
                                              {{.pid = 10,
                                                .name = "node",
                                                .project = "shop",
                                                .startedAt = startedAt,
                                                .lastActive = clock.now() - Seconds{7200}}}}};
      return Value::object({{"ok", true}, {"hasSample", true}, {"projects", toValue(projects)}});
    });
  }
};

TEST_F(PortCommandTests, tellsWhoListensAndHowToStopIt) {
  EXPECT_EQ(run({"port", "3001"}), exitOK);
  EXPECT_THAT(out, AllOf(HasSubstr("node (PID 10)"), HasSubstr("Project      shop\n"),
                         HasSubstr("korvell servers stop 10\n"), HasSubstr("2 h 46 min, since ")));
  EXPECT_THAT(out, Not(HasSubstr("At work"))) << "nobody has followed it";
  EXPECT_EQ(run({"port", "5432"}), exitOK);
  EXPECT_THAT(out, AllOf(HasSubstr("database\\x1b[2J"), HasSubstr("korvell quit 20\n")));
  EXPECT_EQ(run({"port", "80"}), exitFailed);
  EXPECT_EQ(out, "Nobody listens on port 80.\n");
  EXPECT_EQ(run({"port", "631"}), exitOK);
  EXPECT_THAT(out, HasSubstr("the system does not tell you who"));
  for (const char* wrong : {"0", "65536", "http", "-1", "3000x"})
    EXPECT_EQ(run({"port", wrong}), exitUsage) << wrong;
}

TEST_F(PortCommandTests, theKeeperKnowsWhetherItIsIdle) {
  playServer(startOfServer);
  EXPECT_EQ(run({"port", "3000"}), exitOK);
  EXPECT_THAT(out, HasSubstr("At work      2 h 0 min ago: idle\n"));
  EXPECT_EQ(run({"port", "3000", "--json"}), exitOK);
  EXPECT_THAT(out, AllOf(HasSubstr(R"("isIdle":true)"), HasSubstr(R"("isTaken":true)")));
}

TEST_F(PortCommandTests, whoGotTheIdOfAnEndedServerTakesNothingOver) {
  playServer(startOfServer - Seconds{60});
  EXPECT_EQ(run({"port", "3000", "--json"}), exitOK);
  EXPECT_THAT(out, AllOf(HasSubstr(R"("project":"shop")"), Not(HasSubstr("isIdle"))));
}

} // namespace
} // namespace korvell
