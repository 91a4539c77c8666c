// quit on a world of processes, with the owners' rules of macOS: bundles and plain programs.

#include "App/ActionTexts.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Tool/KeeperFixture.h"

namespace korvell {
namespace {

using testing::HasSubstr;
using Sent = FakeProcessTable::Sent;

/// The same world seen through the other seam.
struct Control final : ProcessControl {
  FakeProcessTable& table;
  explicit Control(FakeProcessTable& table) : table(table) {}
  SignalOutcome send(ProcessID pid, std::uint64_t start, ProcessSignal signal) override {
    return table.send(pid, start, signal);
  }
};

struct QuitCommandTests : KeeperFixture {
  FakeProcessTable* table = nullptr;

  QuitCommandTests() {
    auto world = std::make_unique<FakeProcessTable>();
    table = world.get();
    host.system = SystemKind::macOS;
    host.bundleInfo = [](const std::string&, std::string_view) { return std::nullopt; };
    host.applications = std::make_unique<FakeRunningApplications>();
    host.processControl = std::make_unique<Control>(*world);
    host.processes = std::move(world);
    table->add(10, "worker");
    table->add(11, "worker");
    table->add(20, "foreign").deniesSignals = true;
    table->add(30, "launchd").facts.path = "/sbin/launchd";
    for (const auto& [pid, path] : {std::pair(40, "/a/Editor.app/x"), std::pair(50, "/b/Editor.app/x")})
      table->add(pid, "x").facts.path = path;
    table->add(60, "bad\x1b[2J");
  }
};

TEST_F(QuitCommandTests, onlyTheOneThatIsMeantAndOnlyWhenConfirmed) {
  using enum ProcessSignal;
  struct Row {
    std::vector<std::string> arguments;
    std::vector<Sent> sent;
    const char* said; ///< on either stream
  };
  const Row rows[] = {
      {{"nobody", "--yes"}, {}, "Nothing called nobody is running."},
      {{"999", "--yes"}, {}, "There is no process 999."},
      {{"worker"}, {}, "The 2 processes of worker will be asked to quit.\n  10 worker\n  11 worker\n"},
      {{"worker", "--yes"}, {{10, terminate}, {11, terminate}}, "worker was told to end.\n"},
      {{"WORKER", "--yes", "--force"}, {{10, kill}, {11, kill}}, "worker was told to end.\n"},
      {{"proc:worker", "--yes", "--json"},
       {{10, terminate}, {11, terminate}},
       R"("sent":2,"gone":0,"denied":0)"},
      {{"11"}, {}, "worker (PID 11) will be asked to quit."},
      {{"11", "--yes"}, {{11, terminate}}, "worker (PID 11) was told to end."},
      {{"foreign", "--yes"}, {}, "foreign belongs to another user."},
      {{"macOS", "--yes"}, {}, "macOS is the system itself"},
      {{"30", "--yes"}, {{30, terminate}}, "launchd (PID 30) was told to end."},
      {{"Editor", "--yes"}, {}, "say which one:\n  /a/Editor.app\n  /b/Editor.app\n"},
      {{"/b/Editor.app", "--yes"}, {{50, terminate}}, "Editor was told to end."},
      {{"60"}, {}, "bad\\x1b[2J (PID 60)"},
  };
  for (const auto& row : rows) {
    auto arguments = row.arguments;
    arguments.insert(arguments.begin(), "quit");
    table->sent.clear();
    EXPECT_EQ(run(arguments), row.sent.empty() ? exitFailed : exitOK) << row.said;
    EXPECT_EQ(table->sent, row.sent) << row.said;
    EXPECT_THAT(out + err, HasSubstr(row.said));
  }
}

TEST_F(QuitCommandTests, aKeeperSendsTheSignalsToWhomItDescribed) {
  const QuitRequest exact{.processes = {{10, 100}, {11, 110}}, .name = "worker"};
  actions.describing = [&](const ActionRequest& request) -> Result<DescribedAction> {
    EXPECT_EQ(request, ActionRequest(QuitRequest{.app = "worker"}));
    return DescribedAction{exact, describeQuit(exact, {})};
  };
  actions.performing = [&](const ActionRequest& request) {
    EXPECT_EQ(request, ActionRequest(exact));
    return answerOf(exact, {.sent = 1, .gone = 1}, {});
  };
  playKeeper([](const Value&) { return Value(); });
  EXPECT_EQ(run({"quit", "worker", "--yes", "--json"}), exitOK) << err;
  EXPECT_EQ(out, R"({"name":"worker","sent":1,"gone":1,"denied":0})"
                 "\n");
  EXPECT_EQ(run({"quit", "worker"}), exitFailed);
  EXPECT_THAT(err, HasSubstr("The 2 processes of worker will be asked to quit.\n  10 a process\n"));
  EXPECT_EQ(orders.size(), 1u) << "not without a yes";

  actions.performing = {}; // one of an earlier version
  EXPECT_EQ(run({"quit", "worker", "--yes"}), exitOK);
  EXPECT_THAT(err, HasSubstr("of another version; this is done without it"));
  EXPECT_EQ(table->sent.size(), 2u);
}

TEST_F(QuitCommandTests, whyTellsWhoseAProcessIs) {
  EXPECT_EQ(run({"top", "--why", "40"}), exitOK);
  EXPECT_THAT(out, HasSubstr("Application    Editor\nDecided by     bundle\nKey            /a/Editor.app\n"));
  EXPECT_EQ(run({"top", "--why", "40", "--json"}), exitOK);
  EXPECT_THAT(out, HasSubstr(R"("app":"/a/Editor.app","appName":"Editor","rule":"bundle")"));
  for (const char* nobody : {"999", "4294967336"}) // the latter is 40 in 32 bits
    EXPECT_EQ(run({"top", "--why", nobody}), exitFailed) << nobody;
}

} // namespace
} // namespace korvell
