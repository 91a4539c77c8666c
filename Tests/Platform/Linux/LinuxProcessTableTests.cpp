#include "Platform/Linux/LinuxProcessTable.h"

#include "Tests/Fakes/ProcTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Field;

struct LinuxProcessTableTests : testing::Test {
  ProcTree tree;
  double sinceBoot = 100;
  using Process = ProcTree::Process;

  LinuxProcessTable tableOf(ProcTree& world, std::unique_ptr<SocketSource> sockets = nullptr) {
    LinuxProcessTable::Sources sources;
    sources.sockets = std::move(sockets);
    sources.proc = world.folder.path().string();
    sources.sys = world.folder / "sys";
    sources.cpuClock = [&world](ProcessID pid) -> std::optional<std::uint64_t> {
      const auto clock = world.clocks.find(pid);
      return clock == world.clocks.end() ? std::nullopt : std::optional(clock->second);
    };
    sources.sinceBoot = [this] { return Seconds{sinceBoot}; };
    sources.bootTime = Date{1'000'000};
    return LinuxProcessTable(std::move(sources));
  }

  static ProcessCounters find(const std::vector<ProcessCounters>& list, ProcessID pid) {
    const auto found = std::ranges::find(list, pid, &ProcessCounters::pid);
    if (found == list.end()) ADD_FAILURE() << "no process " << pid;
    return found == list.end() ? ProcessCounters{} : *found;
  }
};

TEST_F(LinuxProcessTableTests, aProcessIsReadFromItsFiles) {
  tree.add(1, {.comm = "init", .parent = 0, .start = 2});
  tree.add(40,
           {.comm = "a) R (b\x1b[2J", .parent = 1, .start = 4321, .anonymousPages = 25600, .io = {512, 4096}},
           77);
  auto table = tableOf(tree);
  const auto list = table.read();
  ASSERT_EQ(list.size(), 2u);
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
  tree.add(40, {.io = {100, 0}}, 5);
  auto table = tableOf(tree);
  table.read();
  tree.put(40, {.comm = "exec'd", .io = {900, 0}});
  EXPECT_EQ(find(table.read(), 40).diskRead, 100u);
  tree.clocks[40] = 6;
  EXPECT_EQ(find(table.read(), 40).diskRead, 900u);
  EXPECT_EQ(find(table.read(), 40).comm, "exec'd");
}

struct OneSocket final : SocketSource {
  SocketRecord& record;
  explicit OneSocket(SocketRecord& record) : record(record) {}
  bool dump(std::vector<SocketRecord>& into) override {
    into = {record};
    return true;
  }
  bool dumpListening(std::vector<SocketRecord>&) override { return false; }
  bool ask(std::span<const SocketRecord>, std::vector<SocketRecord>&) override { return false; }
  std::optional<ConnectionsBorn> born() override { return std::nullopt; }
  void drainClosed(std::vector<SocketRecord>& into) override { into.clear(); }
};

TEST_F(LinuxProcessTableTests, descriptorsAreReadAgainOnlyOnceTheProcessHasRun) {
  tree.add(40, {});
  const auto holds = [&](int socket) {
    const auto link = tree.folder / "40/fd/3";
    tree.write("40/fd/keep", "");
    std::filesystem::remove(link);
    std::filesystem::create_symlink("socket:[" + std::to_string(socket) + "]", link);
  };
  SocketRecord record{.cookie = 1, .inode = 7};
  auto table = tableOf(tree, std::make_unique<OneSocket>(record));
  const auto bytes = [&](std::uint64_t cookie, std::uint32_t inode, std::uint64_t received) {
    record = {.cookie = cookie, .inode = inode, .received = received};
    sinceBoot += 10;
    return find(table.read(), 40).network.value_or(ByteCounters{}).in;
  };
  holds(7);
  EXPECT_EQ(bytes(1, 7, 0), 0u);
  EXPECT_EQ(bytes(1, 7, 100), 100u);
  holds(8); // behind its clock's back
  EXPECT_EQ(bytes(2, 8, 50), 100u);
  tree.clocks[40] = 2;
  EXPECT_EQ(bytes(3, 8, 50), 150u);
}

TEST_F(LinuxProcessTableTests, takesWhatTheMachinesHalfOfTheCycleHasRead) {
  const auto shared = std::make_shared<SharedReadings>(tree.folder.path().string(), tree.folder / "sys");
  FileReader reader;
  using Half = SharedReadings::Half;
  const auto anonymous = [&](Half half) { return shared->memory(half, reader).anonymous->resident >> 10; };
  tree.writeMeminfo({.anonymous = 1});
  EXPECT_EQ(anonymous(Half::processes), 1u);
  tree.writeMeminfo({.anonymous = 2});
  EXPECT_EQ(anonymous(Half::machine), 2u) << "never what the other half has read for itself";
  tree.writeMeminfo({.anonymous = 3});
  EXPECT_EQ(anonymous(Half::processes), 2u);
  EXPECT_EQ(anonymous(Half::processes), 3u) << "only once";
}

TEST_F(LinuxProcessTableTests, memoryOfSleepersIsReadInRotation) {
  for (ProcessID pid = 1; pid <= 20; ++pid) tree.add(pid, {});
  auto table = tableOf(tree);
  table.read();
  for (ProcessID pid = 1; pid <= 20; ++pid)
    tree.put(pid, {.anonymousPages = 1}); // too little to show as a whole
  for (int cycle = 1; cycle <= 10; ++cycle) {
    sinceBoot += 2;
    EXPECT_EQ(std::ranges::count(table.read(), 4096u, &ProcessCounters::footprint), 2 * cycle);
  }
}

TEST_F(LinuxProcessTableTests, unexplainedMemoryHasEveryProcessReadAgain) {
  for (ProcessID pid = 40; pid < 52; ++pid) tree.add(pid, {});
  auto table = tableOf(tree);
  table.read();
  // Another process wrote 16 MiB into the sleeper's memory.
  tree.put(40, {.anonymousPages = 4096});
  tree.writeMeminfo({.anonymous = 1'016'384});
  EXPECT_EQ(find(table.read(), 40).footprint, 16u << 20);
  // What a process that ran took explains the machine's advance: nobody else is read.
  tree.put(40, {.anonymousPages = 1});
  tree.add(41, {.anonymousPages = 8192}, 2);
  tree.writeMeminfo({.anonymous = 1'049'152});
  const auto& list = table.read();
  EXPECT_EQ(find(list, 41).footprint, 32u << 20);
  EXPECT_EQ(find(list, 40).footprint, 16u << 20);
}

TEST_F(LinuxProcessTableTests, swappedMemoryCounts) {
  tree.writeMeminfo({.swapTotal = 1000, .swapFree = 900});
  tree.add(40, {.anonymousPages = 10, .swapKiB = 64});
  EXPECT_EQ(find(tableOf(tree).read(), 40).footprint, 40u * 1024 + 64 * 1024);
}

TEST_F(LinuxProcessTableTests, aSleeperIsFoundUnderItsNewParent) {
  const struct {
    const char* what;
    std::optional<Process> parentNow;
  } rows[] = {{"the parent is gone", {}},
              {"the parent is a zombie", Process{.state = 'Z'}},
              {"the parent's id is somebody else's", Process{.start = 5000}}};
  for (const auto& row : rows) {
    ProcTree world;
    world.add(40, {}, 1);
    world.add(41, {.parent = 40}, 1);
    auto table = tableOf(world);
    EXPECT_EQ(find(table.read(), 41).parent, 40) << row.what;
    world.put(41, {.parent = 1});
    world.remove(40);
    if (row.parentNow) world.add(40, *row.parentNow, 9);
    EXPECT_EQ(find(table.read(), 41).parent, 1) << row.what;
  }
}

TEST_F(LinuxProcessTableTests, aReusedIDIsReadAsAnother) {
  tree.add(40, {.comm = "old", .start = 10, .io = {5000, 0}}, 100);
  auto table = tableOf(tree);
  table.read();
  tree.remove(40);
  tree.add(40, {.comm = "new", .start = 20, .io = {1, 0}}, 50);
  const auto& counters = find(table.read(), 40);
  EXPECT_EQ(counters.comm, "new");
  EXPECT_EQ(counters.start, 20u);
  EXPECT_EQ(counters.diskRead, 1u);
}

TEST_F(LinuxProcessTableTests, aFolderWithAnotherNumberIsTheSameProcess) {
  tree.writeIO("40/task/40/io", {0, 100});
  tree.add(40, {.childFaults = 7, .io = {0, 100}}, 5);
  tree.add(41, {.parent = 40});
  auto table = tableOf(tree);
  table.read();
  // A child is reaped: its bytes are not the shell's own.
  tree.add(40, {.childFaults = 9, .io = {0, 5'000'100}}, 6);
  EXPECT_EQ(find(table.read(), 40).diskWritten, 100u);
  // The kernel drops what it cached of /proc.
  std::filesystem::rename(tree.folder / "40", tree.folder / "old");
  std::filesystem::copy(tree.folder / "old", tree.folder / "40", std::filesystem::copy_options::recursive);
  EXPECT_EQ(find(table.read(), 40).diskWritten, 100u);
  EXPECT_EQ(find(table.read(), 40).cpuTime, 6u);
}

TEST_F(LinuxProcessTableTests, theShellDoesNotInheritWhatItsChildWrote) {
  tree.add(40, {.io = {0, 100}}, 1);
  tree.add(41, {.parent = 40, .io = {0, 5'000'000}});
  auto table = tableOf(tree);
  table.read();
  tree.remove(41);
  const struct {
    const char* what;
    std::uint64_t written, childFaults, own;
  } rows[] = {{"a child was waited for that had written some more", 9'000'100, 70, 100},
              {"the shell goes on to write itself", 9'000'111, 70, 111},
              {"both", 10'000'133, 90, 133}};
  std::uint64_t clock = 2;
  for (const auto& row : rows) {
    tree.writeIO("40/task/40/io", {0, row.own});
    tree.add(40, {.childFaults = row.childFaults, .io = {0, row.written}}, clock++);
    EXPECT_EQ(find(table.read(), 40).diskWritten, row.own) << row.what;
  }
}

TEST_F(LinuxProcessTableTests, kernelThreadsHaveNoFigures) {
  tree.add(40,
           {.comm = "kworker/0:1-events", .parent = 2, .flags = 0x4208060, .anonymousPages = 5, .io = {9, 9}},
           1);
  auto table = tableOf(tree);
  const auto first = find(table.read(), 40);
  EXPECT_EQ(first.comm, "kworker/0:1");
  EXPECT_EQ(first.footprint + first.diskRead + first.hidden, 0u);
  tree.add(40, {.comm = "kworker/0:1+mm_percpu_wq", .parent = 2, .flags = 0x4208060}, 3);
  EXPECT_EQ(find(table.read(), 40).comm, "kworker/0:1");
  EXPECT_EQ(find(table.read(), 40).cpuTime, 3u);
  EXPECT_TRUE(table.facts(40)->kernelThread);
}

TEST_F(LinuxProcessTableTests, whatCanNotBeReadIsLeftOutAndTheRestIsThere) {
  for (const ProcessID pid : {40, 41, 42}) tree.add(pid, {});
  std::filesystem::remove(tree.folder / "41/stat");
  tree.write("42/stat", "42 (cut sho");
  tree.write("43/statm", "1 1 1");
  tree.write("self", "no process");
  EXPECT_THAT(tableOf(tree).read(), ElementsAre(Field(&ProcessCounters::pid, 40)));
}

TEST_F(LinuxProcessTableTests, withoutACPUClockTicksServe) {
  tree.add(40, {.ticks = 250});
  tree.clocks.clear();
  auto table = tableOf(tree);
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
  EXPECT_EQ(tableOf(tree).facts(40), expected);
  sinceBoot = 91; // one second after its start
  EXPECT_FALSE(tableOf(tree).facts(40)->settled);
  EXPECT_EQ(tableOf(tree).facts(41), std::nullopt);
}

TEST_F(LinuxProcessTableTests, thePackagesEnergyIsSharedByCPUTime) {
  const auto package = [&](int number, std::uint64_t used) {
    const auto at = fmt::format("sys/class/powercap/intel-rapl:{}/", number);
    tree.write(at + "name", fmt::format("package-{}\n", number));
    tree.write(at + "energy_uj", std::to_string(used) + "\n");
    tree.write(at + "max_energy_range_uj", "1000000\n");
  };
  package(0, 999'000);
  tree.write("sys/class/powercap/intel-rapl:0:0/energy_uj", "77");
  tree.add(40, {}, 1000);
  tree.add(41, {}, 1000);
  auto table = tableOf(tree);
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
