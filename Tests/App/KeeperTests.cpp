#include "App/Keeper.h"

#include "App/KeeperLock.h"
#include "App/RemoteModel.h"
#include "Base/HostedQueue.h"
#include "Tests/App/AppFixture.h"

#include <atomic>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Sent = FakeProcessTable::Sent;

struct KeeperTests : AppFixture {
  Keeper keeper{*main, *model};

  KeeperTests() { attention.watched = false; }
  std::string ask(const std::string& request) {
    std::string text = "<none>";
    keeper.handle(*parseJSON(request), [&](const Value& answer) { text = dumpJSON(answer); });
    time.run();
    return text;
  }
};

TEST_F(KeeperTests, tellsTheWholeStateOrPartsAndNothingElse) {
  time.run();
  EXPECT_EQ(ask(R"({"ask":"state","parts":["report","sensors","aiUsage"]})"),
            R"({"ok":true,"hasSample":false})");
  machine.memoryCounters = {10, MemoryUse{}};
  time.advance(Seconds{20});
  const auto state = *parseJSON(ask(R"({"ask":"state"})"));
  SystemSnapshot told;
  EXPECT_TRUE(fromValue(*state.find("snapshot"), told));
  EXPECT_EQ(told.date, model->snapshot->date);
  KnownParts known;
  EXPECT_TRUE(fromValue(*state.find("known"), known));
  EXPECT_EQ(known, *model->known);
  EXPECT_TRUE(known.has(KnownPart::memory));
  EXPECT_FALSE(fromValue(*parseJSON(R"({"load":{"state":"guessed"}})"), known));
  EXPECT_EQ(state.find("live")->find("cpu")->asArray()->size(), model->live->at(Metric::cpu).size());
  EXPECT_EQ(
      ask(R"({"ask":"state","parts":["totals","nonsense",7]})"),
      R"({"ok":true,"hasSample":true,"totals":{"cpuToday":0.0,"diskWrittenToday":0.0,"networkToday":0.0,)"
      R"("network7Days":0.0,"network30Days":0.0}})");
  EXPECT_EQ(ask(R"({"ask":"state","parts":[]})"), R"({"ok":true,"hasSample":true})");
  for (auto request : {"{}", R"({"ask":{}})", R"({"do":"format"})", R"({"do":["stopServer"]})"})
    EXPECT_EQ(ask(request), R"({"ok":false,"error":"unknown request"})") << request;
}

TEST_F(KeeperTests, aRemoteModelShowsWhatTheKeeperMeasures) {
  std::signal(SIGPIPE, SIG_IGN); // as the tool's main does
  const UserFolders folders{.data = folder / "data", .runtime = folder / "runtime"};
  auto lock = KeeperLock::acquire(folders);
  ASSERT_TRUE(lock);
  lock->announce(keeperSocketPath(folders));
  table.add(10, "node").directory = "/home/u/shop";
  table.ports = {{10, {3000}}};
  time.advance(Seconds{600});
  ASSERT_TRUE(keeper.listen(keeperSocketPath(folders)));

  const auto slow = model->snapshot->date;
  HostedQueue other("other", [] {});
  std::atomic<bool> connected = false;
  std::thread keeping([&] {
    while (!connected) time.run();
  });
  bool lost = false;
  const auto remote = RemoteModel::connect(other, defaults, folders, Seconds{20}, [&lost] { lost = true; });
  connected = true;
  keeping.join();
  ASSERT_TRUE(remote);
  EXPECT_GT(*model->cycle, 61) << "somebody watches: the next cycle was due at once";
  EXPECT_LT(model->snapshot->date - slow, Seconds{2});

  // A cycle whose line finds the one before still on its way is told with the next one.
  const auto follow = [&] {
    do {
      time.advance(Seconds{2});
      for (int i = 0; i < 10'000 && rfc3339(remote->snapshot->date) != rfc3339(model->snapshot->date); ++i) {
        other.runDue();
        std::this_thread::yield();
      }
    } while (rfc3339(remote->snapshot->date) != rfc3339(model->snapshot->date) && !lost);
    EXPECT_EQ(toValue(*remote->snapshot), toValue(*model->snapshot));
    EXPECT_EQ(toValue(*remote->projects), toValue(*model->projects));
    EXPECT_EQ(remote->report->score, model->report->score);
    EXPECT_EQ(remote->live->at(Metric::memory).back().value, model->live->at(Metric::memory).back().value);
    EXPECT_GT(remote->live->at(Metric::memory).size(), 20u);
  };
  for (int cycle = 0; cycle < 4; ++cycle) {
    machine.memoryCounters = {16'000'000'000, MemoryUse{.app = std::uint64_t(cycle) << 30}};
    if (cycle == 1) table.ports.clear();
    follow();
  }
  EXPECT_TRUE(remote->projects->empty());
  model->alerts.set({{}, {}});
  follow();
  EXPECT_EQ(remote->alerts->size(), 2u);
}

TEST_F(KeeperTests, stopsListedServersOnly) {
  table.add(10, "node").directory = "/home/u/shop";
  table.add(11, "postgres").directory = "/var";
  table.ports = {{10, {3000}}, {11, {5432}}};
  time.advance(Seconds{2});
  for (auto request : {R"({"do":"stopServer"})", R"({"do":"stopServer","pid":10})",
                       R"({"do":"stopServer","pid":10,"startedAt":"1970-01-01T00:01:41.000Z"})",
                       R"({"do":"stopServer","pid":11,"startedAt":"1970-01-01T00:01:50.000Z"})"})
    EXPECT_EQ(ask(request), R"({"ok":false,"error":"There is no such server any more."})") << request;
  EXPECT_THAT(table.sent, IsEmpty());

  const auto stop = *parseJSON(R"({"do":"stopServer","pid":10,"startedAt":"1970-01-01T00:01:40.000Z"})");
  std::vector<std::string> outcomes;
  const auto askToStop = [&] {
    keeper.handle(stop,
                  [&](const Value& answer) { outcomes.push_back(*answer.find("outcome")->asString()); });
    time.run();
  };
  table.processes.at(10).deniesSignals = true;
  askToStop();
  table.processes.at(10).deniesSignals = false;
  askToStop();
  time.advance(Seconds{2.9});
  EXPECT_THAT(outcomes, ElementsAre("denied"));
  table.ports.erase(10); // what the kill does
  time.advance(Seconds{0.3});
  EXPECT_THAT(outcomes, ElementsAre("denied", "killed"));
  EXPECT_EQ(table.sent.size(), 2u);
  EXPECT_TRUE(model->projects->empty()) << "who asks next sees it gone";
}

TEST_F(KeeperTests, endsOnlyTheProcessesThatTheCallerSaw) {
  table.add(10, "editor");
  table.add(11, "reused");
  table.add(12, "foreign").deniesSignals = true;
  table.add(getpid(), "korvell");
  time.advance(Seconds{12});
  const Date before = model->snapshot->date;
  const auto self = std::to_string(getpid()), selfStart = std::to_string(getpid() * 10);
  EXPECT_EQ(ask(R"({"do":"quit","processes":[{"pid":10,"start":100},{"pid":11,"start":7},)"
                R"({"pid":12,"start":120},{"pid":)" +
                self + R"(,"start":)" + selfStart + "}]}"),
            R"({"ok":true,"sent":1,"gone":1,"denied":1})");
  EXPECT_EQ(ask(R"({"do":"quit","force":true,"processes":[{"pid":10,"start":100}]})"),
            R"({"ok":true,"sent":1,"gone":0,"denied":0})");
  time.advance(Seconds{0.6});
  EXPECT_GT(model->snapshot->date, before) << "the pace of ten seconds is not waited for";
  for (auto processes :
       {"[]", "[10]", R"([{"pid":1,"start":10}])", R"([{"pid":4294967306,"start":100}])", R"([{"pid":10}])"})
    EXPECT_EQ(ask(std::string(R"({"do":"quit","processes":)") + processes + "}"),
              R"({"ok":false,"error":"processes are needed, each with its pid and start"})")
        << processes;
  EXPECT_THAT(table.sent, ElementsAre(Sent{10, ProcessSignal::terminate}, Sent{10, ProcessSignal::kill}));
}

TEST_F(KeeperTests, anApplicationIsQuitByItsBundle) {
  table.add(10, "editor");
  time.advance(Seconds{12});
  std::vector<QuitResult> results;
  const auto note = [&](const QuitResult& result) { results.push_back(result); };
  model->quit("/opt/nobody", note);
  model->quit("/opt/editor", note);
  time.run();
  // Another process got the id since the snapshot that the user looks at.
  const auto app = model->snapshot->apps.at(0);
  table.add(10, "stranger").counters.start = 555;
  time.advance(Seconds{10});
  model->quit(app, true, note);
  time.run();
  EXPECT_THAT(results, ElementsAre(QuitResult{}, QuitResult{.sent = 1}, QuitResult{}));
  EXPECT_EQ(table.sent.size(), 1u);
}

TEST_F(KeeperTests, removesListedLeftoversAndLooksAgain) {
  launchItems.addUnit(LaunchScope::user, "/u/gone.service", "/opt/gone");
  time.advance(Seconds{12});
  launchItems.addUnit(LaunchScope::user, "/u/new.service", "/opt/gone");
  const std::string missing = R"({"ok":false,"error":"There is no such startup item any more."})";
  const auto remove = [&](const std::string& name, const std::string& program) {
    return ask(R"({"do":"removeStartupItem","plistPath":"/u/)" + name + R"(","label":")" + name +
               R"(","program":")" + program + R"("})");
  };
  EXPECT_EQ(remove("new.service", "/opt/gone"), missing) << "not listed yet";
  EXPECT_EQ(remove("gone.service", "/opt/other"), missing);
  EXPECT_EQ(ask(R"({"do":"removeStartupItem"})"), missing);
  const auto answer = *parseJSON(ask(R"({"do":"rescanStartupItems"})"));
  EXPECT_EQ(answer.find("startupItems")->asArray()->size(), 2u);
  EXPECT_EQ(remove("new.service", "/opt/gone"), R"({"ok":true})");
  EXPECT_THAT(trash.moved, ElementsAre("/u/new.service"));
  EXPECT_EQ(model->startupItems->size(), 1u);
  launchItems.protection = "It is the system's.";
  EXPECT_EQ(remove("gone.service", "/opt/gone"), R"({"ok":false,"error":"It is the system's."})");
}

} // namespace
} // namespace korvell
