#include "Base/ManualQueue.h"
#include "Core/DevServers/DevServerScanner.h"
#include "Core/DevServers/ServerStopper.h"
#include "Tests/Fakes/FakeProcessTable.h"

#include <gtest/gtest.h>
#include <set>

namespace korvell {
namespace {

class DevServerScannerTests : public testing::Test {
protected:
  /// A process in the table and in the snapshot.
  ProcessUsage& add(ProcessID pid, const std::string& name, const std::string& directory,
                    std::vector<int> ports = {}, ProcessID parent = 1) {
    table.add(pid, name, parent).directory = directory;
    if (!ports.empty()) table.ports[pid] = std::move(ports);
    parents[pid] = parent;
    auto& usage = usages[pid];
    usage = {.pid = pid, .name = name, .path = "/usr/bin/" + name};
    return usage;
  }
  void remove(ProcessID pid) {
    table.processes.erase(pid);
    table.ports.erase(pid);
    usages.erase(pid);
    parents.erase(pid);
  }
  std::vector<DevProject> scan() {
    UsageByPID processes;
    for (const auto& [pid, usage] : usages) processes[pid] = &usage;
    return scanner.scan(processes, parents);
  }
  std::vector<ProcessID> pids() {
    std::vector<ProcessID> found;
    for (const auto& project : scan())
      for (const auto& server : project.servers) found.push_back(server.pid);
    return found;
  }
  Date lastActive() { return scan().at(0).servers.at(0).lastActive; }

  FakeProcessTable table;
  std::map<ProcessID, ProcessUsage> usages;
  std::unordered_map<ProcessID, ProcessID> parents;
  std::set<std::string> files;
  ManualClock clock;
  DevServerScanner scanner{table, linuxDevServerTables, "/home/u",
                           [this](const std::string& path) { return files.contains(path); }, clock};
};

TEST_F(DevServerScannerTests, aServerHasItsProjectPortsAndTheUseOfItsChildren) {
  files = {"/home/u/shop/.git", "/home/u/shop/web/package.json"};
  auto& node = add(10, "node", "/home/u/shop/web/src", {3000, 3001});
  node.cpu = 0.5;
  node.memory = 100;
  auto& worker = add(11, "node", "/home/u/shop/web", {}, 10);
  worker.cpu = 2;
  worker.memory = 20;
  add(12, "esbuild", "/tmp", {}, 11).memory = 3;
  add(13, "unrelated", "/tmp").memory = 1000;

  const auto projects = scan();
  ASSERT_EQ(projects.size(), 1u);
  EXPECT_EQ(projects[0].name, "shop");
  EXPECT_EQ(projects[0].servers, (std::vector<DevServer>{{.pid = 10,
                                                          .name = "node",
                                                          .project = "shop",
                                                          .directory = "/home/u/shop/web",
                                                          .runtime = "node",
                                                          .ports = {3000, 3001},
                                                          .memory = 123,
                                                          .cpu = 2.5,
                                                          .startedAt = Date{100},
                                                          .lastActive = clock.now()}}));
  EXPECT_EQ(scanner.portsByPID(), table.ports);
}

TEST_F(DevServerScannerTests, onlyServersBelowTheHomeFolderCount) {
  add(10, "node", "/home/u", {1});       // the home folder itself
  add(11, "node", "/home/user2/a", {1}); // begins with the same letters
  add(12, "node", "/srv/a", {1});
  add(13, "node", "", {1}); // no working directory to be had
  add(14, "ssh", "/home/u/a", {1});
  add(15, "postgres", "/home/u/a", {1}).path = "/usr/sbin/postgres";
  add(16, "node", "/home/u/a"); // listens on nothing
  add(17, "node", "/home/u/a", {1}).path = "/home/u/.nvm/bin/node";
  add(18, "python", "/home/u/a", {1}).path = ""; // hidden in the snapshot: asked again
  table.ports[99] = {1};                         // ended meanwhile
  add(19, "Python", "/home/u/a", {1}).path = "/opt/Python.app/Contents/MacOS/Python";
  EXPECT_EQ(pids(), (std::vector<ProcessID>{17, 18, 19}));
  EXPECT_EQ(scan().at(0).servers.at(2).runtime, "python");
  EXPECT_EQ(scan().at(0).servers.at(2).name, "python") << "its process bears the name of a stub";
}

TEST_F(DevServerScannerTests, projectsGoByTheirMemoryAndServersKeepTheirPlace) {
  add(20, "node", "/home/u/b/web", {80}).memory = 5;
  add(21, "node", "/home/u/b/api", {90}).memory = 50;
  add(22, "node", "/home/u/large", {1}).memory = 40;
  files = {"/home/u/b/.git", "/home/u/b/web/package.json", "/home/u/b/api/package.json"};
  EXPECT_EQ(pids(), (std::vector<ProcessID>{21, 20, 22}));
  usages[22].memory = 60;
  usages[20].memory = 500;
  EXPECT_EQ(pids(), (std::vector<ProcessID>{21, 20, 22}));
  usages[22].memory = 600;
  EXPECT_EQ(pids(), (std::vector<ProcessID>{22, 21, 20}));
}

TEST_F(DevServerScannerTests, aServerIsActiveWhileItUsesMoreThanAHundredthOfACore) {
  const Date seen = clock.now();
  auto& node = add(10, "node", "/home/u/a", {1});
  node.cpu = 1.0;
  clock.elapse(Seconds{60});
  EXPECT_EQ(lastActive(), seen + Seconds{60}); // first sighting
  clock.elapse(Seconds{60});
  EXPECT_EQ(lastActive(), seen + Seconds{60}); // exactly 1.0 is no activity
  node.cpu = 1.01;
  EXPECT_EQ(lastActive(), clock.now());
  node.cpu = 0;
  const Date active = clock.now();
  clock.elapse(Seconds{1801});
  EXPECT_EQ(idleServers(scan(), clock.now()).size(), 1u);
  EXPECT_EQ(lastActive(), active);
}

TEST_F(DevServerScannerTests, anotherProcessOfTheSameIdIsAnotherServer) {
  add(10, "node", "/home/u/a", {1}).cpu = 50;
  const Date first = lastActive();
  clock.elapse(Seconds{4000});
  remove(10);
  add(10, "python", "/home/u/a", {1});
  table.processes[10].counters.start = 12345;
  EXPECT_EQ(lastActive(), first + Seconds{4000});
  remove(10);
  scan(); // and one that stopped listening is forgotten
  clock.elapse(Seconds{4000});
  add(10, "python", "/home/u/a", {1});
  table.processes[10].counters.start = 12345;
  EXPECT_EQ(lastActive(), first + Seconds{8000});
}

class ServerStopperTests : public testing::Test {
protected:
  void stop(Date startedAt = Date{100}) {
    queue->async(
        [=, this] { stopper.stop(10, startedAt, [this](StopOutcome o) { outcomes.push_back(o); }); });
    time.run();
  }
  using Sent = FakeProcessTable::Sent;

  ManualScheduler time;
  FakeProcessTable table;
  std::unique_ptr<Queue> queue = time.makeQueue("sampler");
  ServerStopper stopper{*queue, table, table};
  std::vector<StopOutcome> outcomes;
  const Sent terminate{10, ProcessSignal::terminate}, kill{10, ProcessSignal::kill};
};

TEST_F(ServerStopperTests, onePoliteSignalIsEnoughForAProcessThatEnds) {
  table.add(10, "node");
  stop();
  time.advance(Seconds{1});
  EXPECT_TRUE(outcomes.empty());
  table.processes.erase(10);
  time.advance(Seconds{10});
  EXPECT_EQ(outcomes, std::vector{StopOutcome::ended});
  EXPECT_EQ(table.sent, std::vector{terminate});
}

TEST_F(ServerStopperTests, whoIgnoresItIsKilledAfterThreeSeconds) {
  table.add(10, "node");
  stop();
  time.advance(Seconds{2.9});
  EXPECT_EQ(table.sent, std::vector{terminate});
  time.advance(Seconds{0.3});
  EXPECT_EQ(table.sent, (std::vector{terminate, kill}));
  EXPECT_EQ(outcomes, std::vector{StopOutcome::killed});
  time.advance(Seconds{60});
  EXPECT_EQ(table.sent.size(), 2u);
  stop(); // the same object stops again
  EXPECT_EQ(table.sent.size(), 3u);
}

TEST_F(ServerStopperTests, aReusedIdReceivesNothing) {
  table.add(10, "stranger").counters.start = 101;
  stop(); // between the question and the stop
  EXPECT_TRUE(table.sent.empty());
  EXPECT_EQ(outcomes, std::vector{StopOutcome::gone});

  table.add(10, "node");
  stop();
  table.add(10, "stranger").counters.start = 101; // within the three seconds
  time.advance(Seconds{10});
  EXPECT_EQ(table.sent, std::vector{terminate});
  EXPECT_EQ(outcomes, (std::vector{StopOutcome::gone, StopOutcome::ended}));

  table.add(10, "node").deniesSignals = true; // somebody else's
  stop();
  EXPECT_EQ(table.sent, std::vector{terminate});
  EXPECT_EQ(outcomes.back(), StopOutcome::denied);
}

} // namespace
} // namespace korvell
