#include "ProcTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;

struct LinuxProcessTableTests : testing::Test {
  ProcTree tree;
  using Process = ProcTree::Process;

  static const ProcessCounters& find(const std::vector<ProcessCounters>& list, ProcessID pid) {
    for (const auto& counters : list)
      if (counters.pid == pid) return counters;
    ADD_FAILURE() << "no process " << pid;
    static const ProcessCounters none;
    return none;
  }
  static std::vector<ProcessID> pids(const std::vector<ProcessCounters>& list) {
    std::vector<ProcessID> ids;
    for (const auto& counters : list) ids.push_back(counters.pid);
    return ids;
  }
};

TEST_F(LinuxProcessTableTests, aProcessIsReadFromItsFiles) {
  tree.add(1, {.comm = "init", .parent = 0, .start = 2});
  tree.add(40,
           {.comm = "a) R (b\x1b[2J", .parent = 1, .start = 4321, .anonymousPages = 25600, .io = {512, 4096}},
           77);
  auto table = tree.table();
  const auto list = table.read();
  EXPECT_EQ(pids(list), (std::vector{1, 40}));
  const ProcessCounters expected{.pid = 40,
                                 .parent = 1,
                                 .comm = "a) R (b\x1b[2J",
                                 .start = 4321,
                                 .cpuTime = 77,
                                 .footprint = 25600 * 4096,
                                 .diskRead = 512,
                                 .diskWritten = 4096};
  EXPECT_EQ(list[1], expected);
  EXPECT_EQ(table.start(40), 4321u);
  EXPECT_EQ(table.startDate(40), Date{1'000'043.21});
  EXPECT_EQ(table.start(41), std::nullopt);
}

TEST_F(LinuxProcessTableTests, aStillClockSparesTheFilesAndAMovedOneDoesNot) {
  Process process{.io = {100, 0}};
  tree.add(40, process, 5);
  auto table = tree.table();
  table.read();
  process.io.read = 900;
  process.comm = "exec'd";
  tree.put(40, process);
  EXPECT_EQ(find(table.read(), 40).diskRead, 100u);
  tree.clocks[40] = 6;
  EXPECT_EQ(find(table.read(), 40).diskRead, 900u);
  EXPECT_EQ(find(table.read(), 40).comm, "exec'd");
}

TEST_F(LinuxProcessTableTests, memoryOfSleepersIsReadInRotation) {
  for (ProcessID pid = 1; pid <= 20; ++pid) tree.add(pid, {});
  auto table = tree.table();
  table.read();
  for (ProcessID pid = 1; pid <= 20; ++pid)
    tree.put(pid, {.anonymousPages = 1}); // too little to show as a whole
  const auto seen = [&] {
    const auto& list = table.read();
    return std::count_if(list.begin(), list.end(), [](const auto& c) { return c.footprint == 4096; });
  };
  tree.sinceBoot += 2;
  EXPECT_EQ(seen(), 2);
  for (int cycle = 0; cycle < 9; ++cycle) {
    tree.sinceBoot += 2;
    table.read();
  }
  EXPECT_EQ(seen(), 20) << "none older than 30 s";
}

TEST_F(LinuxProcessTableTests, unexplainedMemoryHasEveryProcessReadAgain) {
  Process sleeper, worker;
  tree.add(40, sleeper);
  tree.add(41, worker);
  for (ProcessID pid = 100; pid < 110; ++pid) tree.add(pid, {});
  auto table = tree.table();
  table.read();
  // Another process wrote 16 MiB into the sleeper's memory.
  sleeper.anonymousPages = 4096;
  tree.put(40, sleeper);
  tree.anonymousKiB += 16 * 1024;
  tree.writeMeminfo();
  EXPECT_EQ(find(table.read(), 40).footprint, 16u << 20);
  // What a process that ran took explains the machine's advance: nobody else is read.
  sleeper.anonymousPages = 1;
  tree.put(40, sleeper);
  worker.anonymousPages = 8192;
  tree.add(41, worker, 2);
  tree.anonymousKiB += 32 * 1024;
  tree.writeMeminfo();
  const auto& list = table.read();
  EXPECT_EQ(find(list, 41).footprint, 32u << 20);
  EXPECT_EQ(find(list, 40).footprint, 16u << 20);
}

TEST_F(LinuxProcessTableTests, swappedMemoryCounts) {
  tree.swapTotalKiB = 1000, tree.swapFreeKiB = 900;
  tree.writeMeminfo();
  tree.add(40, {.anonymousPages = 10, .swapKiB = 64});
  EXPECT_EQ(find(tree.table().read(), 40).footprint, 40u * 1024 + 64 * 1024);
}

TEST_F(LinuxProcessTableTests, aSleeperIsFoundUnderItsNewParent) {
  struct Row {
    const char* what;
    std::function<void(ProcTree&)> end;
  };
  const Row rows[] = {
      {"the parent is gone", [](ProcTree& tree) { tree.remove(40); }},
      {"the parent is a zombie", [](ProcTree& tree) { tree.add(40, {.state = 'Z'}, 2); }},
      {"the parent's id is somebody else's",
       [](ProcTree& tree) {
         tree.remove(40);
         tree.add(40, {.start = 5000}, 9);
       }},
  };
  for (const auto& row : rows) {
    ProcTree world;
    world.add(40, {}, 1);
    world.add(41, {.parent = 40}, 1);
    auto table = world.table();
    EXPECT_EQ(find(table.read(), 41).parent, 40) << row.what;
    world.put(41, {.parent = 1});
    row.end(world);
    EXPECT_EQ(find(table.read(), 41).parent, 1) << row.what;
  }
}

TEST_F(LinuxProcessTableTests, aReusedIDIsReadAsAnother) {
  tree.add(40, {.comm = "old", .start = 10, .io = {5000, 0}}, 100);
  auto table = tree.table();
  table.read();
  tree.remove(40);
  tree.add(40, {.comm = "new", .start = 20, .io = {1, 0}}, 50);
  const auto& counters = find(table.read(), 40);
  EXPECT_EQ(counters.comm, "new");
  EXPECT_EQ(counters.start, 20u);
  EXPECT_EQ(counters.diskRead, 1u);
}

TEST_F(LinuxProcessTableTests, theShellDoesNotInheritWhatItsChildWrote) {
  Process shell{.io = {0, 100}};
  tree.add(40, shell, 1);
  tree.writeIO("40/task/40/io", {0, 100});
  tree.add(41, {.parent = 40, .io = {0, 5'000'000}});
  auto table = tree.table();
  table.read();
  tree.remove(41);
  shell.io.written = 9'000'100; // the child wrote some more before it ended
  shell.childFaults = 70;
  tree.add(40, shell, 2);
  EXPECT_EQ(find(table.read(), 40).diskWritten, 100u);
  // And goes on to write itself, without reaping and with.
  shell.io.written += 11;
  tree.writeIO("40/task/40/io", {0, 111});
  tree.add(40, shell, 3);
  EXPECT_EQ(find(table.read(), 40).diskWritten, 111u);
  shell.io.written += 1'000'022;
  shell.childFaults = 90;
  tree.writeIO("40/task/40/io", {0, 133});
  tree.add(40, shell, 4);
  EXPECT_EQ(find(table.read(), 40).diskWritten, 133u);
}

TEST_F(LinuxProcessTableTests, kernelThreadsHaveNoFigures) {
  tree.add(40,
           {.comm = "kworker/0:1-events", .parent = 2, .flags = 0x4208060, .anonymousPages = 5, .io = {9, 9}},
           1);
  auto table = tree.table();
  const auto first = find(table.read(), 40);
  EXPECT_EQ(first.comm, "kworker/0:1");
  EXPECT_EQ(first.footprint + first.diskRead + first.hidden, 0u);
  tree.add(40, {.comm = "kworker/0:1+mm_percpu_wq", .parent = 2, .flags = 0x4208060}, 3);
  EXPECT_EQ(find(table.read(), 40).comm, "kworker/0:1");
  EXPECT_EQ(find(table.read(), 40).cpuTime, 3u);
  EXPECT_TRUE(table.facts(40)->kernelThread);
}

TEST_F(LinuxProcessTableTests, whatCanNotBeReadIsLeftOutAndTheRestIsThere) {
  tree.add(40, {});
  tree.add(41, {});
  tree.add(42, {});
  std::filesystem::remove(tree.folder / "41/stat");
  tree.write("42/stat", "42 (cut sho");
  tree.write("43/statm", "1 1 1");
  tree.write("self", "no process");
  EXPECT_THAT(pids(tree.table().read()), ElementsAre(40));
}

TEST_F(LinuxProcessTableTests, withoutACPUClockTicksServe) {
  tree.add(40, {.ticks = 250});
  tree.clocks.clear();
  auto table = tree.table();
  EXPECT_EQ(find(table.read(), 40).cpuTime, 2'500'000'000u);
  tree.put(40, {.ticks = 251, .io = {7, 0}});
  EXPECT_EQ(find(table.read(), 40).cpuTime, 2'510'000'000u);
  EXPECT_EQ(find(table.read(), 40).diskRead, 7u);
}

TEST_F(LinuxProcessTableTests, factsAreWhatDecidesAboutTheOwner) {
  using namespace std::string_literals;
  tree.add(40, {.comm = "firefox-esr",
                .start = 9000,
                .user = 1000,
                .controlGroup = "/user.slice/user-1000.slice/session-3.scope",
                .environment = "A=1\0GIO_LAUNCHED_DESKTOP_FILE=/usr/share/applications/firefox-esr.desktop\0"
                               "GIO_LAUNCHED_DESKTOP_FILE_PID=40\0"s,
                .executable = "/usr/lib/firefox-esr/firefox-esr (deleted)"});
  const ProcessFacts expected{.path = "/usr/lib/firefox-esr/firefox-esr",
                              .name = "firefox-esr",
                              .user = 1000,
                              .controlGroup = "/user.slice/user-1000.slice/session-3.scope",
                              .desktopFile = "/usr/share/applications/firefox-esr.desktop",
                              .launchedPID = 40};
  EXPECT_EQ(tree.table().facts(40), expected);
  tree.sinceBoot = 91; // one second after its start
  EXPECT_FALSE(tree.table().facts(40)->settled);
  EXPECT_EQ(tree.table().facts(41), std::nullopt);
}

TEST_F(LinuxProcessTableTests, thePackagesEnergyIsSharedByCPUTime) {
  const auto package = [&](int number, std::uint64_t used) {
    const auto at = fmt::format("sys/class/powercap/intel-rapl:{}/", number);
    tree.write(at + "energy_uj", std::to_string(used) + "\n");
    tree.write(at + "max_energy_range_uj", "1000000\n");
  };
  package(0, 999'000);
  tree.write("sys/class/powercap/intel-rapl:0:0/energy_uj", "77");
  tree.add(40, {}, 1000);
  tree.add(41, {}, 1000);
  auto table = tree.table();
  EXPECT_TRUE(table.energyIsEstimate());
  table.read();
  package(0, 3000); // 4,000 µJ on, wrapped
  tree.clocks[40] += 300;
  tree.clocks[41] += 100;
  const auto& list = table.read();
  EXPECT_EQ(find(list, 40).energy, 3'000'000u);
  EXPECT_EQ(find(list, 41).energy, 1'000'000u);
}

} // namespace
} // namespace korvell
