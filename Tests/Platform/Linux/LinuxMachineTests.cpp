#include "Core/Machine/SystemSampler.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Tests/Contracts/MachineCountersContract.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/FixturesFolder.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using testing::UnorderedElementsAreArray;

constexpr std::uint64_t kB = 1024;

/// One of the recorded or built trees; single files are no volumes and every volume has the same space.
struct Tree {
  explicit Tree(const std::string& machine) {
    const std::string root = fixturePath("Linux/" + machine);
    roots.proc = root + "/proc";
    roots.sys = root + "/sys";
    roots.pciIDs = {root + "/no such list", root + "/pci.ids"};
    roots.nvidiaLibrary = root + "/no such library";
    roots.spaceOf = [this](const std::string& place) -> std::optional<VolumeSpace> {
      if (place.starts_with("/etc/")) return std::nullopt;
      asked.push_back(place);
      return VolumeSpace{1000, 400};
    };
  }
  LinuxMachineRoots roots;
  std::vector<std::string> asked;
};

/// What one member, or a function, tells of each element.
template <class List, class Member>
auto eachOf(const List& list, Member member) {
  std::vector<std::remove_cvref_t<std::invoke_result_t<Member, decltype(*list.begin())>>> result;
  for (const auto& element : list) result.push_back(std::invoke(member, element));
  return result;
}
std::vector<ByteCounters> bytes(const std::map<std::uint64_t, ByteCounters>& disks) {
  return eachOf(disks, &std::pair<const std::uint64_t, ByteCounters>::second);
}
std::vector<std::string> names(const std::vector<InterfaceCounters>& interfaces) {
  return eachOf(interfaces, [](const auto& link) { return link.displayName + " " + link.name; });
}

struct Machine {
  const char* tree;
  MachineFacts facts;
  double load1;
  std::size_t cores;
  CoreTicks core0;
  MemoryUse memory; ///< in kB
  std::vector<ByteCounters> disks;
  std::vector<std::string> volumes;
  std::vector<std::string> interfaces;
  std::vector<GPUCounters> gpus;
};

const Machine machines[] = {
    {.tree = "virtual-machine",
     .facts = {.chipName = "AMD EPYC", .logicalProcessors = 2},
     .load1 = 0.50,
     .cores = 2,
     .core0 = {.user = 9996, .system = 8809, .idle = 209694, .nice = 17236},
     .memory = {45496, 191700, 0, 1396468, 0, PressureLevel::normal},
     .disks = {{3762148352, 9439305728}},
     .volumes = {"/"},
     .interfaces = {"Ethernet eth0"}},
    {.tree = "laptop",
     .facts = {.chipName = "12th Gen Intel(R) Core(TM) i7-1255U",
               .graphicsName = "Intel Graphics + NVIDIA GeForce MX550",
               .performanceCores = 4,
               .efficiencyCores = 8,
               .logicalProcessors = 12},
     .load1 = 1.37,
     .cores = 12,
     .core0 = {.user = 1000, .system = 300 + 5 + 7, .idle = 9050, .nice = 20},
     .memory = {9900000, 2290400, 409600, 2600000, 2000000, PressureLevel::critical},
     .disks = {{20971520, 41943040}, {1048576, 2097152}},
     .volumes = {"/", "/run/media/me/USB STICK"},
     .interfaces = {"Ethernet enp0s31f6", "Wi-Fi wlp0s20f3", "Cellular wwan0"},
     .gpus = {{0, 0}}},
    {.tree = "desktop",
     .facts = {.chipName = "AMD Ryzen 7 7700X 8-Core Processor",
               .graphicsName = "Radeon RX 6700/6700 XT/6750 XT / 6800M/6850M XT",
               .logicalProcessors = 16},
     .load1 = 0.42,
     .cores = 16,
     .core0 = {.user = 5000, .system = 2040, .idle = 90300, .nice = 0},
     .memory = {16000000, 3300000, 300000, 25400000, 0, PressureLevel::normal},
     .disks = {{51200000, 102400000}, {3584000, 4096000}},
     .volumes = {"/", "/data", "/tank"},
     .interfaces = {"Ethernet enp6s0"},
     .gpus = {{37, 2147483648 + 104857600}}},
    {.tree = "container",
     .facts = {.chipName = "Intel(R) Xeon(R) Platinum 8259CL CPU @ 2.50GHz", .logicalProcessors = 4},
     .load1 = 0,
     .cores = 4,
     .core0 = {.user = 100, .system = 50 + 1 + 30, .idle = 1003, .nice = 0},
     .memory = {6600000, 230000, 0, 870000, 0, PressureLevel::warning},
     .disks = {{512000, 1024000}},
     .volumes = {"/", "/var/lib/database"},
     .interfaces = {"Ethernet eth0"}},
    {.tree = "arm-board",
     .facts = {.chipName = "FriendlyElec NanoPC-T4",
               .performanceCores = 1,
               .efficiencyCores = 4,
               .logicalProcessors = 5},
     .load1 = 0.1,
     .cores = 5,
     .core0 = {.user = 400, .system = 62, .idle = 8009, .nice = 10},
     .memory = {760000, 370000, 0, 1570000, 0, PressureLevel::normal},
     .disks = {{1536000, 2048000}, {4096, 0}},
     .volumes = {"/"},
     .interfaces = {"Ethernet end0", "Wi-Fi wlx00e04c"}},
};

TEST(LinuxMachineTests, everyMachineReadsAsItIs) {
  for (const auto& machine : machines) {
    SCOPED_TRACE(machine.tree);
    Tree tree(machine.tree);
    LinuxMachineCounters counters(tree.roots);
    expectMachineContract(counters);
    EXPECT_EQ(counters.facts(), machine.facts)
        << counters.facts().chipName << " / " << counters.facts().graphicsName;
    const auto cpu = counters.cpu();
    EXPECT_NEAR(cpu.load1.value_or(-1), machine.load1, 1e-9);
    EXPECT_EQ(cpu.cores.size(), machine.cores);
    EXPECT_EQ(cpu.cores.at(0), machine.core0);
    auto memory = machine.memory;
    for (auto* field : {&memory.app, &memory.wired, &memory.compressed, &memory.cached, &memory.swapUsed})
      *field *= kB;
    EXPECT_EQ(counters.memory().use, memory);
    EXPECT_THAT(bytes(counters.disks()), UnorderedElementsAreArray(machine.disks));
    tree.asked.clear();
    EXPECT_EQ(eachOf(counters.volumes(), &Volume::mountPoint), machine.volumes);
    EXPECT_EQ(tree.asked, machine.volumes) << "a server is never asked for its space";
    EXPECT_EQ(names(counters.interfaces()), machine.interfaces);
    EXPECT_EQ(counters.gpus(), machine.gpus);
  }
}

TEST(LinuxMachineTests, memoryThatOthersGiveBackOrNeverHadIsNoTrouble) {
  // In kB: the programs', what is fixed, compressed, cache, swap.
  const std::pair<const char*, MemoryUse> rows[] = {
      {"zfs-server", {6100000, 7698000, 0, 1302000 + 49000000, 0, PressureLevel::normal}},
      {"database-server", {3200000, 44264000, 0, 2200000, 0, PressureLevel::normal}}};
  for (const auto& [name, expected] : rows) {
    auto use = LinuxMachineCounters(Tree(name).roots).memory().use.value();
    for (auto* field : {&use.app, &use.wired, &use.compressed, &use.cached}) *field /= kB;
    EXPECT_EQ(use, expected) << name << ": " << use.wired;
  }
}

TEST(LinuxMachineTests, theMachineAtHandKeepsTheContract) {
  LinuxMachineCounters live;
  expectMachineContract(live);
}

TEST(LinuxMachineTests, aMachineThatTellsNothingReadsAsNothing) {
  TemporaryFolder empty;
  LinuxMachineCounters counters({empty / "proc", empty / "sys", {}, "", [](const std::string&) {
                                   return std::optional<VolumeSpace>{};
                                 }});
  EXPECT_EQ(counters.facts(), MachineFacts{});
  EXPECT_EQ(counters.cpu(), CPUCounters{});
  EXPECT_EQ(counters.memory(), MemoryCounters{});
  EXPECT_EQ(counters.power(), PowerReading{});
  EXPECT_TRUE(counters.disks().empty() && counters.volumes().empty() && counters.interfaces().empty() &&
              counters.gpus().empty());
}

TEST(LinuxMachineTests, theLaptopDrainsAndTheDesktopHasPackagePowerOnly) {
  Tree laptop("laptop"), desktop("desktop");
  LinuxMachineCounters counters(laptop.roots);
  const auto stats = batteryStats(counters.power(), 0);
  EXPECT_TRUE(stats.present && !stats.onAC);
  EXPECT_EQ(stats.percent, 61);
  EXPECT_DOUBLE_EQ(stats.health, 82);
  EXPECT_EQ(stats.cycles, 321);
  EXPECT_DOUBLE_EQ(stats.temperature, 31.4);
  EXPECT_DOUBLE_EQ(stats.systemPower, 10.62);
  EXPECT_EQ(stats.minutesRemaining, 161);
  EXPECT_THAT(counters.power().packages, ElementsAre(std::pair(0, EnergyCounter{5000000, 262143328850})));
  const auto power = LinuxMachineCounters(desktop.roots).power();
  EXPECT_EQ(power.battery, std::nullopt);
  EXPECT_THAT(power.packages, ElementsAre(std::pair(0, EnergyCounter{65532000000, 65532610987})));
}

/// A machine whose files change between two readings.
struct ChangingMachineTests : testing::Test {
  TemporaryFolder files;
  LinuxMachineCounters counters{{files / "proc", files / "sys", {}, "", volumeSpace}};
};

TEST_F(ChangingMachineTests, devicesAndLinksThatComeAreLookedUpAgain) {
  const std::string sda = "8 0 sda 1 0 2 0 1 0 4 0\n", sdb = "8 16 sdb 1 0 3 0 1 0 5 0\n";
  files.write("sys/block/sda/size", "1");
  files.write("proc/diskstats", sda);
  EXPECT_THAT(bytes(counters.disks()), ElementsAre(ByteCounters{1024, 2048}));
  files.write("sys/block/sdb/size", "1");
  files.write("proc/diskstats", sda + "8 1 sda1 1 0 9 0 1 0 9 0\n" + sdb);
  EXPECT_THAT(bytes(counters.disks()),
              UnorderedElementsAre(ByteCounters{1024, 2048}, ByteCounters{1536, 2560}));
  files.write("proc/diskstats", sdb);
  EXPECT_THAT(bytes(counters.disks()), ElementsAre(ByteCounters{1536, 2560}));

  const std::string eth0 = " eth0: 5 0 0 0 0 0 0 0 6\n";
  files.write("sys/class/net/eth0/device/uevent", "");
  files.write("proc/net/dev", "x\ny\n" + eth0);
  EXPECT_THAT(names(counters.interfaces()), ElementsAre("Ethernet eth0"));
  files.write("sys/class/net/wlan0/device/uevent", "");
  files.write("sys/class/net/wlan0/phy80211/name", "");
  files.write("proc/net/dev", "x\ny\n wlan0: 1 0 0 0 0 0 0 0 2\n" + eth0);
  EXPECT_THAT(names(counters.interfaces()), ElementsAre("Wi-Fi wlan0", "Ethernet eth0"));
}

TEST_F(ChangingMachineTests, manyCoresAndManyInterrupts) {
  std::string text = "cpu 1 1 1 1\n";
  for (int i = 0; i < 300; ++i)
    text += "cpu" + std::to_string(i) + " 100 200 300 400 500 600 700 800 900 1000\n";
  text += "intr 1" + std::string(100'000, '0') + "\nctxt 5\n";
  files.write("proc/stat", text);
  EXPECT_EQ(counters.cpu().cores.size(), 300u);
  files.write("proc/stat", "cpu 1 1 1 1\ncpu0 5 0 0 0\nintr 1\n");
  EXPECT_EQ(counters.cpu().cores.size(), 1u);
  files.write("proc/stat", "cpu 1 1 1 1\ncpu0 5 0 0 0");
  EXPECT_EQ(counters.cpu().cores.size(), 0u) << "a file that ends in the middle of a core";
}

TEST(LinuxMachineTests, singleFilesAreNoVolumes) {
  TemporaryFolder tree;
  tree.write("file", "");
  EXPECT_EQ(volumeSpace(tree / "file"), std::nullopt);
  EXPECT_EQ(volumeSpace(tree / "nothing"), std::nullopt);
  EXPECT_GT(volumeSpace(tree / "").value_or(VolumeSpace{}).total, 0);
}

} // namespace
} // namespace korvell
