#include "App/Keeper.h"

#include "App/KeeperClient.h"
#include "App/KeeperLock.h"
#include "Base/ManualQueue.h"
#include "Base/ThreadQueue.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeTrash.h"
#include "Tests/Fakes/OneEach.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace korvell {
namespace {

UserFolders foldersIn(const TemporaryFolder& folder) {
  UserFolders folders;
  folders.data = folder / "data";
  folders.runtime = folder / "runtime";
  return folders;
}

struct KeeperTests : testing::Test {
  ManualScheduler time;
  FakeMachineCounters machine;
  FakeProcessTable table;
  FakeRunningApplications applications;
  OneEach owners;
  FakeLaunchItems launchItems;
  FakeTrash trash;
  FixedAttention unwatched{false};
  std::unique_ptr<Queue> main = time.makeQueue("main");
  AppModel model{*main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine, subjects()),
                 unwatched,
                 AppModel::Seams{.launchItems = &launchItems, .trash = &trash, .makeQueue = time.factory()}};
  Keeper keeper{*main, model};

  Sampler::Subjects subjects() {
    Sampler::Subjects subjects;
    subjects.devServers = std::make_unique<DevServerScanner>(
        table, linuxDevServerTables, "/home/u", [](const std::string&) { return false; }, time.clock());
    subjects.processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, 4);
    subjects.launchItems = &launchItems;
    subjects.table = &table;
    subjects.control = &table;
    subjects.applications = &applications;
    return subjects;
  }
  /// The answer to a request, after `span`.
  std::string ask(const std::string& request, Seconds span = {}) {
    std::string text = "<none>";
    keeper.handle(*parseJSON(request), [&](const Value& answer) { text = dumpJSON(answer); });
    time.run();
    if (span > Seconds{}) time.advance(span);
    return text;
  }
};

TEST_F(KeeperTests, tellsTheWholeStateOrPartsAndNothingElse) {
  time.advance(Seconds{20});
  const auto state = *parseJSON(ask(R"({"ask":"state"})"));
  EXPECT_EQ(state.find("ok")->asBool(), true);
  EXPECT_EQ(state.find("hasSample")->asBool(), true);
  SystemSnapshot told;
  EXPECT_TRUE(fromValue(*state.find("snapshot"), told));
  EXPECT_EQ(told.date, model.snapshot->date);
  EXPECT_EQ(state.find("live")->find("cpu")->asArray()->size(), model.live->at(Metric::cpu).size());
  EXPECT_EQ(state.find("sensors"), nullptr); // never read
  EXPECT_EQ(
      ask(R"({"ask":"state","parts":["totals","nonsense",7]})"),
      R"({"ok":true,"hasSample":true,"totals":{"cpuToday":0.0,"diskWrittenToday":0.0,"networkToday":0.0,)"
      R"("network7Days":0.0,"network30Days":0.0}})");
  EXPECT_EQ(ask(R"({"ask":"state","parts":[]})"), R"({"ok":true,"hasSample":true})");
  for (auto request :
       {"{}", R"({"ask":"secrets"})", R"({"ask":{}})", R"({"do":"format"})", R"({"do":["stopServer"]})"})
    EXPECT_EQ(ask(request), R"({"ok":false,"error":"unknown request"})") << request;
}

TEST_F(KeeperTests, stopsListedServersOnly) {
  table.add(10, "node").directory = "/home/u/shop";
  table.add(11, "postgres").directory = "/var";
  table.ports = {{10, {3000}}, {11, {5432}}};
  time.advance(Seconds{2});
  const auto missing = R"({"ok":false,"error":"There is no such server any more."})";
  for (auto request :
       {R"({"do":"stopServer"})", R"({"do":"stopServer","pid":"10"})", R"({"do":"stopServer","pid":10})",
        R"({"do":"stopServer","pid":10,"startedAt":"1970-01-01T00:01:41.000Z"})",
        R"({"do":"stopServer","pid":11,"startedAt":"1970-01-01T00:01:50.000Z"})"})
    EXPECT_EQ(ask(request), missing) << request;
  EXPECT_TRUE(table.sent.empty());

  const auto stop = R"({"do":"stopServer","pid":10,"startedAt":"1970-01-01T00:01:40.000Z"})";
  std::string answer = "<none>";
  keeper.handle(*parseJSON(stop), [&](const Value& value) { answer = dumpJSON(value); });
  time.advance(Seconds{2.9});
  EXPECT_EQ(answer, "<none>");
  table.ports.erase(10); // what the kill does
  time.advance(Seconds{0.3});
  EXPECT_EQ(answer, R"({"ok":true,"outcome":"killed"})");
  EXPECT_EQ(table.sent.size(), 2u);
  EXPECT_TRUE(model.projects->empty()) << "who asks next sees it gone";
  table.ports[10] = {3000};
  time.advance(Seconds{40});

  for (auto& [pid, entry] : table.processes) entry.deniesSignals = true;
  EXPECT_EQ(ask(stop), R"({"ok":true,"outcome":"denied"})");
  table.processes.erase(10);
  EXPECT_EQ(ask(stop), R"({"ok":true,"outcome":"gone"})");
}

TEST_F(KeeperTests, endsOnlyTheProcessesThatTheCallerSaw) {
  table.add(10, "editor");
  table.add(11, "reused");
  table.add(12, "foreign").deniesSignals = true;
  table.add(getpid(), "korvell");
  time.advance(Seconds{12});
  const auto& seen = *model.snapshot;
  const Date before = seen.date;
  const auto self = std::to_string(getpid()), selfStart = std::to_string(getpid() * 10);
  EXPECT_EQ(ask(R"({"do":"quit","processes":[{"pid":10,"start":100},{"pid":11,"start":7},)"
                R"({"pid":12,"start":120},{"pid":)" +
                self + R"(,"start":)" + selfStart + "}]}"),
            R"({"ok":true,"sent":1,"gone":1,"denied":1})");
  EXPECT_EQ(ask(R"({"do":"quit","force":true,"processes":[{"pid":10,"start":100}]})"),
            R"({"ok":true,"sent":1,"gone":0,"denied":0})");
  EXPECT_EQ(table.sent,
            (std::vector<FakeProcessTable::Sent>{{10, ProcessSignal::terminate}, {10, ProcessSignal::kill}}));
  table.processes.erase(10);
  time.advance(Seconds{0.6});
  EXPECT_GT(model.snapshot->date, before) << "the pace of ten seconds is not waited for";
  for (auto request :
       {R"({"do":"quit"})", R"({"do":"quit","processes":[]})", R"({"do":"quit","processes":[10]})",
        R"({"do":"quit","processes":[{"pid":-1,"start":0}]})",
        R"({"do":"quit","processes":[{"pid":1,"start":10}]})",
        R"({"do":"quit","processes":[{"pid":4294967306,"start":100}]})",
        R"({"do":"quit","processes":[{"pid":10}]})"})
    EXPECT_EQ(ask(request), R"({"ok":false,"error":"processes are needed, each with its pid and start"})")
        << request;
  EXPECT_EQ(table.sent.size(), 2u);
}

TEST_F(KeeperTests, anApplicationIsQuitByItsBundle) {
  table.add(10, "editor");
  time.advance(Seconds{12});
  QuitResult result{.denied = 9};
  model.quit("/opt/nobody", [&](const QuitResult& told) { result = told; });
  EXPECT_EQ(result, QuitResult{});
  model.quit("/opt/editor", [&](const QuitResult& told) { result = told; });
  time.run();
  EXPECT_EQ(result, QuitResult{.sent = 1});
  // Another process got the id since the snapshot that the user looks at.
  const auto app = model.snapshot->apps.at(0);
  table.processes.at(10).counters.start = 555;
  table.processes.at(10).facts.name = "stranger";
  time.advance(Seconds{10});
  model.quit(app, true, [&](const QuitResult& told) { result = told; });
  time.run();
  EXPECT_EQ(result, QuitResult{});
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
  std::vector<StartupItem> told;
  ASSERT_TRUE(fromValue(*answer.find("startupItems"), told));
  EXPECT_EQ(told.size(), 2u);
  EXPECT_EQ(remove("new.service", "/opt/gone"), R"({"ok":true})");
  EXPECT_EQ(trash.moved, std::vector<std::string>{"/u/new.service"});
  EXPECT_EQ(model.startupItems->size(), 1u);
  launchItems.protection = "It is the system's.";
  EXPECT_EQ(remove("gone.service", "/opt/gone"), R"({"ok":false,"error":"It is the system's."})");
}

TEST_F(KeeperTests, aStopUnderWayWhenEverythingEndsIsDropped) {
  table.add(10, "node").directory = "/home/u/shop";
  table.ports = {{10, {3000}}};
  auto short_ = std::make_unique<AppModel>(
      *main, std::make_unique<Sampler>(time.makeQueue("short"), machine, subjects()), unwatched);
  time.advance(Seconds{2});
  int answers = 0;
  short_->stop(short_->projects->at(0).servers.at(0), [&](StopOutcome) { ++answers; });
  time.advance(Seconds{1});
  short_.reset();
  time.advance(Seconds{10});
  EXPECT_EQ(answers, 0);
  EXPECT_EQ(table.sent.size(), 1u);
}

TEST(KeeperLockTests, thereIsOneKeeperAndItsFileTellsWhereItAnswers) {
  TemporaryFolder folder;
  const auto folders = foldersIn(folder);
  EXPECT_EQ(announcedSocket(folders), std::nullopt);
  {
    auto first = KeeperLock::acquire(folders);
    ASSERT_TRUE(first);
    first->announce("/run/somewhere/keeper.sock");
    EXPECT_EQ(announcedSocket(folders), "/run/somewhere/keeper.sock");
    const auto second = KeeperLock::acquire(folders);
    ASSERT_FALSE(second);
    EXPECT_EQ(second.reason(), "Korvell is already running.");
    EXPECT_EQ(announcedSocket(folders), "/run/somewhere/keeper.sock");
  }
  EXPECT_EQ(announcedSocket(folders), std::nullopt);
  EXPECT_TRUE(KeeperLock::acquire(folders));

  auto unwritable = folders;
  unwritable.data = folder / "data/keeper.lock/below";
  const auto failed = KeeperLock::acquire(unwritable);
  ASSERT_FALSE(failed);
  EXPECT_NE(failed.reason().find("can't write"), std::string::npos);
  EXPECT_EQ(keeperSocketPath({.data = "/d", .runtime = "/r"}), "/r/keeper.sock");
  EXPECT_EQ(keeperSocketPath({.data = "/d", .runtime = ""}), "/d/keeper.sock");
}

struct KeeperClientTests : testing::Test {
  KeeperClientTests() { std::signal(SIGPIPE, SIG_IGN); } // as the tool's main does
};

TEST_F(KeeperClientTests, asksARunningKeeperAndNothingElse) {
  TemporaryFolder folder;
  const auto folders = foldersIn(folder);
  EXPECT_FALSE(KeeperClient::connect(folders));
  auto lock = KeeperLock::acquire(folders);
  ASSERT_TRUE(lock);
  lock->announce(keeperSocketPath(folders));
  EXPECT_FALSE(KeeperClient::connect(folders)); // announced, but nobody is there

  FakeMachineCounters machine;
  FixedAttention unwatched(false);
  ThreadQueue main("main");
  std::unique_ptr<AppModel> model;
  std::unique_ptr<Keeper> keeper;
  main.sync([&] {
    model = std::make_unique<AppModel>(
        main, std::make_unique<Sampler>(std::make_unique<ThreadQueue>(Sampler::queueLabel), machine),
        unwatched);
    keeper = std::make_unique<Keeper>(main, *model);
    EXPECT_TRUE(keeper->listen(keeperSocketPath(folders)));
  });
  auto client = KeeperClient::connect(folders);
  ASSERT_TRUE(client);
  const auto state = client->ask(Value::object({{"ask", "state"}}), Seconds{20});
  ASSERT_TRUE(state);
  EXPECT_NE(state->find("snapshot"), nullptr);
  EXPECT_EQ(client->ask(Value("no object"), Seconds{20}), refusal("not a JSON object"));
  EXPECT_TRUE(client->ask(Value::object({{"ask", "state"}}), Seconds{20})); // still connected
  main.sync([&] {
    keeper.reset();
    model.reset();
  });
  EXPECT_EQ(client->ask(Value::object({{"ask", "state"}}), Seconds{20}), std::nullopt);
}

TEST_F(KeeperClientTests, aKeeperThatDoesNotAnswerInTimeIsGivenUp) {
  TemporaryFolder folder;
  const auto folders = foldersIn(folder);
  auto lock = KeeperLock::acquire(folders);
  ASSERT_TRUE(lock);
  lock->announce(keeperSocketPath(folders));
  const auto server = LineServer::listen(
      keeperSocketPath(folders),
      [](const std::string& line, const LineServer::Reply& reply) {
        if (line == "\"noise\"") reply("\xff{not json");
      },
      {}, isSameUser);
  auto client = KeeperClient::connect(folders);
  ASSERT_TRUE(client);
  EXPECT_EQ(client->ask(Value("silence"), Seconds{0.01}), std::nullopt);
  EXPECT_EQ(client->ask(Value("again"), Seconds{20}), std::nullopt); // at once: the connection was given up
  client = KeeperClient::connect(folders);
  EXPECT_EQ(client->ask(Value("noise"), Seconds{20}), std::nullopt);
}

} // namespace
} // namespace korvell
