#include "App/Keeper.h"

#include "App/KeeperLock.h"
#include "App/RemoteModel.h"
#include "Base/HostedQueue.h"
#include "Tests/App/AppFixture.h"
#include "Words/Languages.h"

#include <atomic>
#include <csignal>
#include <thread>
#include <unistd.h>

namespace korvell {
namespace {

struct KeeperTests : AppFixture {
  Keeper keeper{*main, *model, *actions};

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
  EXPECT_EQ(ask(R"({"ask":"state","parts":["report","historyProblem","aiUsage"]})"),
            R"({"ok":true,"hasSample":false})");
  machine.memoryCounters = {10, MemoryUse{}};
  time.advance(Seconds{20});
  const auto state = *parseJSON(ask(R"({"ask":"state"})"));
  SystemSnapshot told;
  EXPECT_TRUE(fromValue(*state.find("snapshot"), told));
  EXPECT_EQ(told.date, model->snapshot->date);
  EXPECT_TRUE(state.find("sensors")->find("temperatures")->asArray()->empty());
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
  const auto small = *parseJSON(ask(R"({"ask":"state","parts":["machine"]})"));
  EXPECT_TRUE(small.find("machine")->find("memory"));
  EXPECT_TRUE(small.find("machine")->find("apps")->asArray()->empty());
  EXPECT_EQ(state.find("machine"), nullptr) << "told to nobody who does not name it";
  EXPECT_EQ(ask(R"({"ask":"state","parts":[]})"), R"({"ok":true,"hasSample":true})");
  for (auto request :
       {"{}", R"({"ask":{}})", R"({"do":"format"})", R"({"do":["stopServer"]})", R"({"describe":"format"})"})
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

TEST_F(KeeperTests, describesAndDoesWhatItIsAsked) {
  const auto names = *parseJSON(ask(R"({"ask":"actions"})"));
  EXPECT_EQ(names.find("actions")->asArray()->size(), std::variant_size_v<ActionRequest>);
  launchItems.addUnit(LaunchScope::user, "/u/gone.service", "/opt/gone");
  table.add(10, "editor");
  table.add(12, "foreign").deniesSignals = true;
  time.advance(Seconds{12});

  const auto described = *parseJSON(ask(R"({"describe":"quit","app":"editor"})"));
  EXPECT_EQ(*described.find("description")->find("message")->asString(), "editor will be asked to quit.");
  EXPECT_EQ(
      ask(dumpJSON(*described.find("request"))),
      R"({"ok":true,"sentence":"editor was told to end.","name":"editor","sent":1,"gone":0,"denied":0})");
  EXPECT_EQ(ask(R"({"describe":"quit","app":"nobody"})"),
            R"({"ok":false,"error":"Nothing called nobody is running."})");
  EXPECT_EQ(ask(R"({"do":"quit","force":true,"processes":[{"pid":12,"start":120}]})"),
            R"-({"ok":false,"sentence":"foreign (PID 12) belongs to another user.",)-"
            R"-("name":"foreign (PID 12)","sent":0,"gone":0,"denied":1})-");
  EXPECT_EQ(parseJSON(ask(R"({"do":"rescanStartupItems"})"))->find("startupItems")->asArray()->size(), 1u);
  for (auto request : {R"({"do":"quit","processes":[]})", R"({"do":"quit","processes":[10]})",
                       R"({"do":"quit","processes":[{"pid":1,"start":10}]})",
                       R"({"do":"quit","processes":[{"pid":4294967306,"start":100}]})",
                       R"({"do":"quit","processes":[{"pid":10}]})", R"({"do":"quit","app":"editor"})",
                       R"({"do":"stopServer","pid":"10"})", R"({"do":"changeSetting"})"})
    EXPECT_EQ(parseJSON(ask(request))->find("ok")->asBool(), false) << request;
  EXPECT_EQ(table.sent.size(), 1u);
}

TEST_F(KeeperTests, answersInTheLanguageOfWhoAsks) {
  setLanguages(languages("en"));
  table.add(10, "editor");
  table.add(11, "worker");
  time.advance(Seconds{12});
  const auto asks = [&](std::string_view request) { return *parseJSON(ask(std::string(request))); };
  const auto message = [](const Value& answer) {
    return *answer.find("description")->find("message")->asString();
  };
  auto exact = *asks(R"({"describe":"quit","app":"editor"})").find("request");
  EXPECT_EQ(message(asks(R"({"describe":"quit","app":"editor","language":"de"})")),
            "editor wird gebeten, sich zu beenden.");
  EXPECT_EQ(message(asks(R"({"describe":"stopIdleServers","language":"de"})")),
            "Kein Dev-Server ist untätig.");
  EXPECT_EQ(*asks(dumpJSON(exact.set("language", "de"))).find("sentence")->asString(),
            "editor wurde angewiesen, sich zu beenden.");
  exact = *asks(R"({"describe":"quit","app":"worker","language":"tlh"})").find("request");
  EXPECT_EQ(*asks(dumpJSON(exact)).find("sentence")->asString(), "worker was told to end.")
      << "of one that tells none";
  EXPECT_EQ(currentLanguage().code, "en");
  setLanguages({});
}

} // namespace
} // namespace korvell
