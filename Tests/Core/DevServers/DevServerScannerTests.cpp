#include "Core/DevServers/DevServerScanner.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeProcessTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace korvell {
namespace {

using testing::ElementsAre;

struct DevServerScannerTests : testing::Test {
  /// A process in the table and in the snapshot.
  ProcessUsage& add(ProcessID pid, const std::string& name, const std::string& directory,
                    std::vector<int> ports = {1}, ProcessID parent = 1) {
    table.add(pid, name, parent).directory = directory;
    if (!ports.empty()) table.ports[pid] = std::move(ports);
    parents[pid] = parent;
    return usages[pid] = {.pid = pid, .name = name, .path = "/usr/bin/" + name};
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
  ParentsByPID parents;
  std::set<std::string> files{"/home/u/shop/.git", "/home/u/shop/web/package.json",
                              "/home/u/shop/api/package.json"};
  ManualClock clock;
  DevServerScanner scanner{table,
                           linuxDevServerTables,
                           "/home/u",
                           [this](const std::string& path) { return files.contains(path); },
                           [](const std::string& path) { return path.starts_with("/opt/idea/"); },
                           clock};
};

TEST_F(DevServerScannerTests, aServerHasItsProjectPortsAndTheUseOfItsChildren) {
  auto& node = add(10, "node", "/home/u/shop/web/src", {3000, 3001});
  node.cpu = 0.5;
  node.memory = 100;
  auto& worker = add(11, "node", "/home/u/shop/web", {}, 10);
  worker.cpu = 2;
  worker.memory = 20;
  add(12, "esbuild", "/tmp", {}, 11).memory = 3;
  add(13, "unrelated", "/tmp", {}).memory = 1000;
  EXPECT_THAT(scan(), ElementsAre(DevProject{"shop",
                                             {{.pid = 10,
                                               .name = "node",
                                               .project = "shop",
                                               .directory = "/home/u/shop/web",
                                               .runtime = "node",
                                               .ports = {3000, 3001},
                                               .memory = 123,
                                               .cpu = 2.5,
                                               .startedAt = Date{100},
                                               .lastActive = clock.now()}}}));
  EXPECT_EQ(scanner.portsByPID(), table.ports);
}

TEST_F(DevServerScannerTests, onlyServersBelowTheHomeFolderCount) {
  add(10, "node", "/home/u");       // the home folder itself
  add(11, "node", "/home/user2/a"); // begins with the same letters
  add(13, "node", "");              // no working directory to be had
  add(14, "ssh", "/home/u/a");
  add(15, "postgres", "/home/u/a").path = "/usr/sbin/postgres";
  add(16, "node", "/home/u/a", {}); // listens on nothing
  add(17, "node", "/home/u/a").path = "/home/u/.nvm/bin/node";
  add(18, "python", "/home/u/a").path = ""; // hidden in the snapshot: asked again
  table.ports[99] = {1};                    // ended meanwhile
  add(19, "Python", "/home/u/a").path = "/opt/Python.app/Contents/MacOS/Python";
  EXPECT_THAT(pids(), ElementsAre(17, 18, 19));
  EXPECT_EQ(scan().at(0).servers.at(2).name, "python") << "its process bears the name of a stub";
}

TEST_F(DevServerScannerTests, anEditorStartedFromAProjectFolderIsNoServer) {
  files.insert({"/home/u/code/resources/app/package.json", "/opt/chat/resources/app.asar", "/app/bin/node"});
  add(10, "code", "/home/u/shop").path = "/home/u/code/code";
  add(11, "chat", "/home/u/shop").path = "/opt/chat/chat";
  add(12, "java", "/home/u/shop").path = "/opt/idea/jbr/bin/java";
  add(13, "cursor", "/home/u/shop").path = "/tmp/.mount_cursorX/cursor";
  add(14, "code", "/home/u/shop").path = "/app/extra/code"; // inside a Flatpak
  add(15, "node", "/home/u/shop").path = "/app/bin/node";   // a folder of ours that is called so
  add(16, "air", "/home/u/shop").path = "/home/u/go/bin/air";
  EXPECT_THAT(pids(), ElementsAre(15, 16));
}

TEST_F(DevServerScannerTests, projectsGoByTheirMemoryAndServersKeepTheirPlace) {
  add(20, "node", "/home/u/shop/web").memory = 5;
  add(21, "node", "/home/u/shop/api").memory = 50;
  add(22, "node", "/home/u/large").memory = 40;
  EXPECT_THAT(pids(), ElementsAre(21, 20, 22));
  usages[20].memory = 500;
  usages[22].memory = 600;
  EXPECT_THAT(pids(), ElementsAre(22, 21, 20));
}

TEST_F(DevServerScannerTests, aServerIsActiveWhileItUsesMoreThanAHundredthOfACore) {
  auto& node = add(10, "node", "/home/u/a");
  node.cpu = 1.0;
  const Date seen = lastActive();
  EXPECT_EQ(seen, clock.now());
  clock.elapse(Seconds{60});
  EXPECT_EQ(lastActive(), seen) << "exactly 1.0 is no activity";
  node.cpu = 1.01;
  EXPECT_EQ(lastActive(), seen + Seconds{60});
  node.cpu = 0;
  clock.elapse(Seconds{60});
  EXPECT_EQ(lastActive(), seen + Seconds{60});

  table.processes[10].counters.start = 12345;
  EXPECT_EQ(lastActive(), clock.now()) << "another process of the same id";
  table.ports.clear();
  scan();
  clock.elapse(Seconds{60});
  table.ports[10] = {1};
  EXPECT_EQ(lastActive(), clock.now()) << "one that did not listen for a while";
}

} // namespace
} // namespace korvell
