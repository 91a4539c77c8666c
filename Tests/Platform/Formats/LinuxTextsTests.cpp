#include "Platform/Formats/Graphics.h"
#include "Platform/Formats/LinuxDevices.h"
#include "Platform/Formats/LinuxMemory.h"
#include "Platform/Formats/LinuxProcessor.h"
#include "Platform/Formats/MountTable.h"
#include "Platform/Formats/PowerSupplies.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(LinuxTextsTests, ticksAreSummedByKind) {
  const auto cores = parseProcStat("cpu  9 9 9 9 9 9 9 9 9 9\ncpu3 10 2 30 400 50 6 7 8 9 1\nintr 5\n");
  ASSERT_TRUE(cores);
  const CoreTicks expected{.user = 10, .system = 30 + 6 + 7 + 8, .idle = 450, .nice = 2};
  EXPECT_THAT(*cores, ElementsAre(std::pair(3, expected)));
  EXPECT_EQ(parseProcStat("cpu 1 2 3 4\ncpu0 1 2 3"), std::nullopt) << "cut in the middle of a core";
  EXPECT_EQ(parseProcStat("cpu 1 2 3 4\ncpu0 1 2 3 4\n"), std::nullopt) << "more cores may follow";
}

TEST(LinuxTextsTests, coreLists) {
  EXPECT_THAT(parseCPUList("0-2,5,8-9\n"), ElementsAre(0, 1, 2, 5, 8, 9));
  EXPECT_THAT(parseCPUList("\n"), testing::IsEmpty());
  EXPECT_THAT(parseCPUList("3-1,x,-4,0-99999999,7"), ElementsAre(7));
}

TEST(LinuxTextsTests, coresAreFastFromFourFifthsOfTheFastest) {
  EXPECT_EQ(coreKinds({236, 231, 190, 189}), (CoreKinds{0, 0})) << "boost rankings of equal cores";
  EXPECT_EQ(coreKinds({485, 485, 1024, 820}), (CoreKinds{2, 2}));
  EXPECT_EQ(coreKinds({}), (CoreKinds{0, 0}));
}

TEST(LinuxTextsTests, decimals) {
  const std::pair<const char*, std::optional<double>> rows[] = {
      {"8.45 x", 8.45}, {"18446744073709551615.25", 18446744073709551615.25}, {"7", 7}, {".5", {}}, {"", {}}};
  for (const auto& [text, number] : rows) EXPECT_EQ(parseDecimal(text), number) << text;
  const std::string digits(400, '7');
  EXPECT_EQ(parseDecimal(digits + "." + digits), std::nullopt) << "more than a number holds";
}

TEST(LinuxTextsTests, pressureNeedsShortMemoryNotOnlyStalls) {
  struct Row {
    std::uint64_t available; // per mille
    double some, full;
    PressureLevel level;
  };
  using enum PressureLevel;
  const Row rows[] = {
      {960, 99, 99, normal}, // one group of processes thrashes inside its own limit
      {250, 50, 50, normal}, {249, 10, 0, warning},  {249, 9.9, 0, normal}, {119, 0, 0, warning},
      {120, 0, 0, normal},   {99, 20, 10, critical}, {99, 20, 9, warning},  {50, 0, 0, warning},
      {49, 10, 0, critical}, {49, 9, 0, warning},
  };
  for (const auto& row : rows)
    EXPECT_EQ(memoryPressure({.total = 1000, .available = row.available}, MemoryStall{row.some, row.full}),
              row.level)
        << row.available << " " << row.some << " " << row.full;
  for (const auto& [available, level] :
       {std::pair(249u, normal), {119u, warning}, {50u, warning}, {49u, critical}})
    EXPECT_EQ(memoryPressure({.total = 1000, .available = available}, std::nullopt), level) << available;
  EXPECT_EQ(memoryPressure({.total = 1000, .available = 30, .hugePages = 800}, std::nullopt), normal);
  EXPECT_EQ(memoryPressure({.total = 1000, .hugePages = 1000}, std::nullopt), normal);
}

TEST(LinuxTextsTests, memoryThatDoesNotAddUpStaysInBounds) {
  EXPECT_EQ(parseMemInfo("MemFree: 5 kB\n"), std::nullopt);
  const auto info =
      parseMemInfo("MemTotal: 100 kB\nMemFree: 90 kB\nCached: 5 kB\nShmem: 20 kB\nSwapTotal: 1 kB\n"
                   "SwapFree: 3 kB\nAnonPages: 70 kB");
  ASSERT_TRUE(info);
  EXPECT_EQ(info->available, 95u * 1024);
  const auto use = memoryCounters(*info, std::nullopt, 0, 0).use.value();
  EXPECT_EQ(use.cached, 0u) << "more shared memory than page cache";
  EXPECT_EQ(use.wired, 0u);
  EXPECT_EQ(use.swapUsed, 0u);
  EXPECT_EQ(use.app, 10u * 1024) << "what is not free";

  const auto inContainer = parseMemInfo("MemTotal: 262144 kB\nMemFree: 200000 kB\nMemAvailable: 230000 kB\n"
                                        "Cached: 30000 kB\nShmem: 0 kB\nAnonPages: 8919200 kB\n");
  EXPECT_EQ(memoryCounters(*inContainer, std::nullopt, 1 << 30, std::uint64_t{1} << 34).use,
            (MemoryUse{.cached = 62144u * 1024}))
      << "of the host's ARC what fits";
  EXPECT_EQ(memoryCounters(*inContainer, std::nullopt, 1 << 30, 0).use,
            (MemoryUse{.app = 32144u * 1024, .cached = 30000u * 1024}))
      << "and of its pages";
  const auto most =
      parseMemInfo("MemTotal: 5 kB\nAnonPages: 18446744073709551616 kB\nShmem: 18014398509481985 kB\n"
                   "HugePages_Free: 18446744073709551615\nHugepagesize: 1048576 kB\n");
  EXPECT_EQ(most->anonPages, UINT64_MAX);
  EXPECT_EQ(most->shmem, UINT64_MAX);
  EXPECT_EQ(most->freeHugePages, UINT64_MAX);
}

TEST(LinuxTextsTests, networkLines) {
  std::vector<NetworkLine> lines;
  parseNetDev("Inter-|   Receive\n face |bytes\n"
              "  eth0:18446744073709551615 2 3 4 5 6 7 8 77 9\n"
              "eth0:1: 5 0 0 0 0 0 0 0 6\n",
              lines);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].name, "eth0");
  EXPECT_EQ(lines[0].bytes, (ByteCounters{UINT64_MAX, 77})) << "no blank behind the colon";
  EXPECT_EQ(lines[1].name, "eth0:1");
  EXPECT_EQ(lines[1].bytes, (ByteCounters{5, 6}));
}

TEST(LinuxTextsTests, theDefaultRouteWithTheLowestMetric) {
  constexpr auto table = "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\n"
                         "tun0\t00000000\t0\t1\t0\t0\t0\t00000080\n"
                         "wlan0\t00000000\t0\t3\t0\t0\t600\t00000000\n"
                         "eth0\t00000000\t0\t3\t0\t0\t100\t00000000\n"
                         "eth1\t00000000\t0\t3\t0\t0\t100\t00000000\n";
  EXPECT_EQ(parseDefaultRoute(table), "eth0");
  EXPECT_EQ(parseDefaultRoute("Iface\n"), "");

  const std::string nowhere(32, '0'), route = nowhere + " 00 " + nowhere + " 00 fe80" + nowhere.substr(4);
  const auto table6 = nowhere + " 40 " + nowhere + " 00 " + nowhere + " 00000001 1 0 00000001 prefix\n" + //
                      route + " 00000400 00000002 00000000 00000003     wlan0\n" +                        //
                      route + " 00000064 00000002 00000000 00000003     eth0\n" +                         //
                      route + " 00000001 00000002 00000000 00000002     down\n" +                         //
                      route + " 00000000 00000001 00000000 00200201     lo\n";
  EXPECT_EQ(parseDefaultRoute6(table6), "eth0");
  EXPECT_EQ(parseDefaultRoute6(""), "");
}

TEST(LinuxTextsTests, disksGoByTheirNames) {
  for (const auto* name : {"sda", "nvme0n1", "vda", "mmcblk0", "xvda", "bcache0"})
    EXPECT_TRUE(mayBeWholeDisk(name));
  for (const auto* name : {"loop0", "ram1", "zram0", "zd16", "sr0", "fd0", "nbd3", "dm-0", "md127"})
    EXPECT_FALSE(mayBeWholeDisk(name)) << name;
  EXPECT_NE(blockDeviceIdentity({"sda", 8, 0, {}}), blockDeviceIdentity({"sda", 8, 16, {}}));
  EXPECT_NE(blockDeviceIdentity({"sda", 8, 0, {}}), blockDeviceIdentity({"sdb", 8, 0, {}}));
}

TEST(LinuxTextsTests, mountLines) {
  const auto mounts =
      parseMountInfo("36 35 98:0 /mnt1 /mnt/a\\040b\\134c rw shared:1 master:2 - ext3 /dev/ro\\011ot rw\n"
                     "broken line\n37 35 0:5 / /x rw - tmpfs none rw");
  ASSERT_EQ(mounts.size(), 2u);
  EXPECT_EQ(mounts[0], (Mount{"98:0", "/mnt/a b\\c", "ext3", "/dev/ro\tot"}));
  EXPECT_EQ(mounts[1], (Mount{"0:5", "/x", "tmpfs", "none"}));
}

TEST(LinuxTextsTests, volumesThatAreShown) {
  struct Row {
    const char* name;
    std::vector<Mount> table;
    std::vector<std::string> shown;
  };
  const Mount root{"8:1", "/", "ext4", "/dev/sda1"};
  const Row rows[] = {
      {"no root in the table", {{"8:2", "/data", "ext4", "/dev/sda2"}}, {"/", "/data"}},
      {"the last root is the one seen",
       {{"0:1", "/", "rootfs", "rootfs"}, {"8:2", "/b", "ext4", "/dev/sda1"}, root},
       {"/"}},
      {"a root from a server is asked all the same",
       {{"0:9", "/", "nfs", "server:/root"}, {"8:2", "/d", "ext4", "/dev/sdb"}},
       {"/", "/d"}},
      {"a dead server mounted over a volume hides it",
       {root, {"8:2", "/data", "ext4", "/dev/sdb"}, {"0:9", "/data", "cifs", "//server/x"}},
       {"/"}},
      {"a user-space file system on a device is one",
       {root, {"8:2", "/d", "fuseblk", "/dev/sdb1"}, {"0:8", "/e", "fuse.x", "x"}},
       {"/", "/d"}},
      {"folders that only begin alike",
       {root, {"8:2", "/bootstrap", "ext4", "/dev/sdb"}, {"8:3", "/run/media/me/X", "vfat", "/dev/sdc"}},
       {"/", "/bootstrap", "/run/media/me/X"}},
      {"below an automount point",
       {root, {"0:7", "/auto", "autofs", "systemd-1"}, {"8:2", "/auto", "ext4", "/dev/sdb"}},
       {"/", "/auto"}},
  };
  for (const auto& row : rows) {
    std::vector<std::string> shown;
    for (const auto& mount : volumesWorthShowing(row.table)) shown.push_back(mount.mountPoint);
    EXPECT_EQ(shown, row.shown) << row.name;
  }
}

TEST(LinuxTextsTests, aTableOfManyContainersIsReadInNoTime) {
  // Comparing each mount with every other takes minutes here.
  std::vector<Mount> table{{"8:1", "/", "ext4", "/dev/sda1"}};
  for (int i = 0; i < 40'000; ++i) {
    const auto number = std::to_string(i);
    table.push_back({"0:" + number, "/served/" + number, "fuse.x", "x"});
    table.push_back({"7:" + number, "/served/" + number + "/in", "ext4", "/dev/hidden" + number});
    table.push_back({"9:" + number, "/disk/" + number, "ext4", "/dev/disk" + number});
  }
  EXPECT_EQ(volumesWorthShowing(table).size(), 40'001u);
  EXPECT_EQ(mountsForFiles(table, "/home/u").size(), 40'001u);
}

PowerSupply supply(PowerSupply::Kind kind, std::initializer_list<const char*> properties) {
  std::string uevent;
  for (const std::string property : properties) uevent += "POWER_SUPPLY_" + property + "\n";
  return parsePowerSupply(kind, uevent);
}
PowerSupply pack(std::initializer_list<const char*> properties) {
  return supply(PowerSupply::Kind::battery, properties);
}
PowerSupply adapter(const char* online) { return supply(PowerSupply::Kind::adapter, {online}); }

TEST(LinuxTextsTests, packsThatCountChargeAndSignTheirCurrent) {
  const auto battery = combinedBattery({pack(
      {"STATUS=Discharging", "VOLTAGE_MIN_DESIGN=10000000", "VOLTAGE_NOW=11000000", "CURRENT_NOW=-2000000",
       "CHARGE_NOW=2200000", "CHARGE_FULL=4000000", "CHARGE_FULL_DESIGN=5000000"})});
  ASSERT_TRUE(battery);
  EXPECT_DOUBLE_EQ(battery->fullCapacity / battery->designCapacity, 0.8);
  EXPECT_DOUBLE_EQ(battery->systemWatts.value_or(0), 22);
  EXPECT_EQ(battery->minutesRemaining, 60);
  EXPECT_EQ(battery->percent, 55);
  EXPECT_EQ(battery->externalConnected, false) << "no adapter listed, and it drains";
}

TEST(LinuxTextsTests, severalPacksAreOneBattery) {
  const auto battery =
      combinedBattery({pack({"STATUS=Not charging", "CYCLE_COUNT=10", "ENERGY_NOW=20000000",
                             "ENERGY_FULL=20000000", "ENERGY_FULL_DESIGN=25000000", "CAPACITY=100"}),
                       pack({"STATUS=Charging", "CYCLE_COUNT=90", "ENERGY_NOW=10000000",
                             "ENERGY_FULL=40000000", "ENERGY_FULL_DESIGN=50000000", "POWER_NOW=30000000"}),
                       pack({"PRESENT=0", "STATUS=Unknown"})});
  ASSERT_TRUE(battery);
  EXPECT_EQ(battery->percent, 50);
  EXPECT_EQ(battery->cycles, 90);
  EXPECT_TRUE(battery->isCharging);
  EXPECT_EQ(battery->externalConnected, true);
  EXPECT_FALSE(battery->systemWatts) << "what flows goes into the battery";
  EXPECT_EQ(battery->minutesRemaining, std::nullopt);
  EXPECT_EQ(combinedBattery({pack({"PRESENT=0"})}), std::nullopt);
}

TEST(LinuxTextsTests, whatNoBatteryHasIsNotShown) {
  const auto broken =
      combinedBattery({pack({"STATUS=Charging", "CYCLE_COUNT=3216740000", "CAPACITY=4294967298",
                             "VOLTAGE_NOW=-1", "CHARGE_FULL=5000000", "TEMP=-2731"})});
  ASSERT_TRUE(broken);
  EXPECT_EQ(broken->cycles, std::nullopt);
  EXPECT_EQ(broken->percent, std::nullopt);
  EXPECT_EQ(broken->fullCapacity, 0);
  EXPECT_EQ(broken->celsius, std::nullopt);
  EXPECT_EQ(combinedBattery({pack({"STATUS=Full", "CAPACITY=103"})})->percent, 100);
  const auto unknown = combinedBattery(
      {pack({"STATUS=Discharging", "VOLTAGE_NOW=12000000", "CURRENT_NOW=4294967295", "CHARGE_NOW=5000000"})});
  EXPECT_EQ(unknown->systemWatts, std::nullopt);
  EXPECT_EQ(unknown->minutesRemaining, std::nullopt);
  EXPECT_EQ(parseDeviceSupply("mouse", "POWER_SUPPLY_CAPACITY=-3").percent, std::nullopt);
}

TEST(LinuxTextsTests, adaptersTellWhatPowersTheMachine) {
  const auto draining = pack({"STATUS=Discharging", "CAPACITY=50"});
  EXPECT_EQ(combinedBattery({draining, adapter("ONLINE=0"), adapter("ONLINE=1")})->externalConnected, true)
      << "an adapter that is too weak still is one";
  EXPECT_EQ(combinedBattery({pack({"STATUS=Full"}), adapter("ONLINE=0")})->externalConnected, false);
  EXPECT_EQ(powerSupplyKind("USB_PD\n"), PowerSupply::Kind::adapter);
  EXPECT_EQ(powerSupplyKind("UPS\n"), std::nullopt);
}

TEST(LinuxTextsTests, cardsAreNamedByTheList) {
  constexpr auto list = "# list\n1000  Other\n\t73df  Wrong\n1002  Maker\n"
                        "\t73df  Navi 22 [Radeon RX 6700]\n\t\t1002 0e36  Card\n"
                        "\t73ff  Plain name\n8086  Intel\n\t0001  X\nC 03  Display\n\t73df  VGA\n";
  EXPECT_EQ(pciDeviceName(list, 0x1002, 0x73df), "Radeon RX 6700");
  EXPECT_EQ(pciDeviceName(list, 0x1002, 0x73ff), "Plain name");
  EXPECT_EQ(pciDeviceName(list, 0x1002, 0x0001), "") << "another maker's";
  EXPECT_EQ(pciDeviceName(list, 0x1002, 0x0e36), "") << "a card's own number";
  EXPECT_EQ(parsePCINumber("0x10de\n"), 0x10de);
  EXPECT_EQ(parsePCINumber("10de"), std::nullopt);
  EXPECT_EQ(parsePCINumber("0x1ffff"), std::nullopt);
}

} // namespace
} // namespace korvell
