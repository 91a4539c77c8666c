#include "Base/ManualQueue.h"
#include "Platform/Linux/LinuxSensorChips.h"
#include "Sensors/ChipReadings.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/FixturesFolder.h"

#include <cerrno>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

/// The real files, some of which fail or take their time.
class TroubledFiles final : public SensorFiles {
public:
  struct Script {
    std::map<std::string, int> errors;     ///< by the end of the path
    std::map<std::string, Seconds> delays; ///< by the end of the path
    int listed = 0;
    std::vector<std::string> read;
  };
  TroubledFiles(Script& script, ManualClock& clock) : script_(script), clock_(clock) {}

  int read(const std::string& path, std::span<char> into) override {
    script_.read.push_back(path);
    for (const auto& [end, delay] : script_.delays)
      if (path.ends_with(end)) clock_.elapse(delay);
    for (const auto& [end, error] : script_.errors)
      if (path.ends_with(end)) return -error;
    return SensorFiles::read(path, into);
  }
  std::vector<std::string> names(const std::string& folder) override {
    ++script_.listed;
    return SensorFiles::names(folder);
  }

private:
  Script& script_;
  ManualClock& clock_;
};

struct SensorChipsTests : testing::Test {
  ManualScheduler time;
  TroubledFiles::Script files;
  TemporaryFolder tree;
  LinuxSensorChips own = chips(tree.path().string());

  LinuxSensorChips chips(const std::string& root) {
    return LinuxSensorChips(time.clock(), time.factory(),
                            {root + "/proc", root + "/sys", KORVELL_FAKE_NVIDIA},
                            std::make_unique<TroubledFiles>(files, time.clock()));
  }
  /// All chips that are new, or slow, have answered.
  SensorsSnapshot settled(SensorChips& chips) {
    chips.read(Seconds(0));
    time.run();
    return chipSnapshot(chips.read(Seconds(0)));
  }
  SensorsSnapshot machine(const std::string& name) {
    auto chips = this->chips(fixturePath("Linux/" + name));
    return settled(chips);
  }
  void chip(const std::string& name, const std::string& driver, const std::string& millidegrees) {
    tree.write("sys/class/hwmon/" + name + "/name", driver + "\n");
    tree.write("sys/class/hwmon/" + name + "/temp1_input", millidegrees + "\n");
  }
  SensorsSnapshot read() { return chipSnapshot(own.read(Seconds(0))); }
  bool wasRead(const std::string& end) const {
    return std::ranges::any_of(files.read, [&](const std::string& path) { return path.ends_with(end); });
  }
};

std::vector<std::string> temperatures(const SensorsSnapshot& snapshot) {
  std::vector<std::string> rows;
  for (const auto& [name, celsius, kind, chip] : snapshot.temperatures)
    rows.push_back(*chip + ": " + name + " " + std::to_string(int(celsius)));
  return rows;
}

TEST_F(SensorChipsTests, anIntelLaptop) {
  const auto snapshot = machine("laptop");
  EXPECT_THAT(snapshot.cpuCelsius, Optional(57.0));
  EXPECT_EQ(snapshot.gpuCelsius, std::nullopt) << "the card sleeps and its sensor says 0";
  EXPECT_THAT(temperatures(snapshot),
              ElementsAre("coretemp: Core 0 54", "coretemp: Core 4 56", "coretemp: Core 16 52",
                          "coretemp: Core 17 52", "thinkpad: CPU 52", "coretemp: Package id 0 57",
                          "acpitz: acpitz 51", "nvme: Composite 38", "INT3400 Thermal: INT3400 Thermal 20",
                          "iwlwifi_1: iwlwifi_1 43", "nvme: Sensor 1 38"));
  EXPECT_THAT(snapshot.fans, ElementsAre(FanReading{"thinkpad fan1", "Fan 1", 2647}));
}

TEST_F(SensorChipsTests, anAMDDesktopWithACardOfItsOwn) {
  const auto snapshot = machine("desktop");
  EXPECT_THAT(snapshot.cpuCelsius, Optional(61.375));
  EXPECT_THAT(snapshot.gpuCelsius, Optional(47.0));
  EXPECT_THAT(temperatures(snapshot),
              ElementsAre("nct6798: CPUTIN 40", "k10temp: Tctl 61", "amdgpu: edge 47", "amdgpu: junction 52",
                          "drivetemp 2: drivetemp 2 29", "amdgpu: mem 56", "nvme 1: nvme 1 Composite 40",
                          "nvme 2: nvme 2 Composite 44", "nct6798: PECI Agent 0 61", "nct6798: SYSTIN 34",
                          "k10temp: Tccd1 52", "k10temp: Tccd2 50"));
  EXPECT_THAT(snapshot.fans, ElementsAre(FanReading{"nct6798 fan1", "nct6798 Fan 1"},
                                         FanReading{"nct6798 fan2", "Fan 2", 1171, 300},
                                         FanReading{"nct6798 fan3", "Fan 3", 847},
                                         FanReading{"amdgpu fan1", "amdgpu Fan 1", 611, 0, 3300}));
  EXPECT_FALSE(wasRead("hwmon5/temp1_input")) << "a disk with platters sleeps undisturbed";
}

TEST_F(SensorChipsTests, theOtherMachines) {
  const auto workstation = machine("nvidia-workstation");
  EXPECT_THAT(workstation.cpuCelsius, Optional(49.0));
  EXPECT_THAT(workstation.gpuCelsius, Optional(51.0));
  EXPECT_THAT(workstation.fans, ElementsAre(FanReading{"asus fan1", "cpu_fan", 1205}));

  const auto board = machine("arm-board");
  EXPECT_EQ(board.temperatures.size(), 3u) << "a zone that is a chip as well counts once";
  EXPECT_THAT(board.cpuCelsius, Optional(48.686));
  EXPECT_THAT(board.gpuCelsius, Optional(46.153));
  EXPECT_THAT(board.socCelsius, Optional(47.538));

  const auto server = machine("server");
  EXPECT_THAT(server.cpuCelsius, Optional(43.0)) << "of two packages";
  EXPECT_EQ(server.fans.size(), 8u);
  EXPECT_EQ(server.temperatures.size(), 15u);
  EXPECT_EQ(machine("virtual-machine"), SensorsSnapshot{});
}

TEST_F(SensorChipsTests, chipsOfOneNameAreToldApartByTheirDevices) {
  for (const auto* n : {"0", "1"}) {
    chip(std::string("hwmon") + n, "nvme", "40000");
    tree.write(std::string("sys/devices/nvme") + n + "/x", "");
    std::filesystem::create_symlink(std::string("../../../devices/nvme") + n,
                                    tree.path() / "sys/class/hwmon" / (std::string("hwmon") + n) / "device");
  }
  tree.write("sys/class/hwmon/hwmon1/temp1_label", "Comp\x1b[2J\xff\n");
  EXPECT_THAT(temperatures(settled(own)),
              ElementsAre("nvme nvme1: Comp\\x1b[2J\xef\xbf\xbd 40", "nvme nvme0: nvme nvme0 40"));
}

TEST_F(SensorChipsTests, whatCannotBeReadIsLeftOutAndComesBack) {
  chip("hwmon0", "coretemp", "40000");
  tree.write("sys/class/hwmon/hwmon0/temp2_input", "41000\n");
  ASSERT_EQ(settled(own).temperatures.size(), 2u);
  for (const int error : {EIO, EAGAIN, ENODATA}) {
    files.errors["temp1_input"] = error;
    EXPECT_THAT(temperatures(read()), ElementsAre("coretemp: coretemp 2 41")) << error;
  }
  files.errors.clear();
  EXPECT_EQ(read().temperatures.size(), 2u);
  for (const auto* text : {"", "\n", "0", "-5000", "150001", "40000 C", "99999999999999999999"}) {
    tree.write("sys/class/hwmon/hwmon0/temp1_input", text);
    EXPECT_EQ(read().temperatures.size(), 1u) << text;
  }
  tree.write("sys/class/hwmon/hwmon0/temp1_input", "150000\n");
  EXPECT_EQ(read().temperatures.size(), 2u);
}

TEST_F(SensorChipsTests, foldersAreListedOnlyWhenAChipVanishedOrAfterMinutes) {
  chip("hwmon0", "coretemp", "40000");
  chip("hwmon1", "nvme", "30000");
  settled(own);
  const int listed = files.listed;
  for (int i = 0; i < 49; ++i) {
    time.clock().elapse(Seconds(6));
    EXPECT_EQ(read().temperatures.size(), 2u);
  }
  EXPECT_EQ(files.listed, listed);

  std::filesystem::remove_all(tree.path() / "sys/class/hwmon/hwmon1");
  EXPECT_EQ(read().temperatures.size(), 1u) << "it vanished between listing and reading";
  read();
  EXPECT_GT(files.listed, listed);
  chip("hwmon2", "k10temp", "50000");
  EXPECT_EQ(read().temperatures.size(), 1u);
  time.clock().elapse(LinuxSensorChips::searchInterval);
  EXPECT_EQ(settled(own).temperatures.size(), 2u);
}

TEST_F(SensorChipsTests, aSlowChipHoldsUpNobody) {
  chip("hwmon0", "coretemp", "40000");
  chip("hwmon1", "bmc", "30000");
  files.delays["hwmon1/temp1_input"] = Seconds(0.15);
  EXPECT_EQ(settled(own).temperatures.size(), 2u);
  const auto cost = [&] {
    const auto begin = time.clock().monotonic();
    read();
    return time.clock().monotonic() - begin;
  };
  tree.write("sys/class/hwmon/hwmon1/temp1_input", "35000\n");
  EXPECT_EQ(cost(), Seconds(0)) << "it is read on a queue of its own";
  EXPECT_EQ(read().temperatures.front().celsius, 30) << "the last value in between";
  time.run();
  EXPECT_EQ(read().temperatures.front().celsius, 35);
  time.run();

  files.delays.clear();
  for (int i = 0; i < 12; ++i) {
    read();
    time.run();
  }
  files.read.clear();
  read();
  EXPECT_TRUE(wasRead("hwmon1/temp1_input")) << "quick again, it is read at once";
  files.delays["hwmon0/temp1_input"] = Seconds(0.1);
  EXPECT_GT(cost(), Seconds(0.05)) << "once, before anybody knew";
  EXPECT_EQ(cost(), Seconds(0));
}

TEST_F(SensorChipsTests, theLimitsOfFansAreReadOnceForAChip) {
  chip("hwmon0", "board", "40000");
  for (const auto* file : {"fan1_input", "fan1_max"})
    tree.write(std::string("sys/class/hwmon/hwmon0/") + file, "1500\n");
  settled(own);
  files.read.clear();
  time.clock().elapse(LinuxSensorChips::searchInterval);
  EXPECT_THAT(settled(own).fans, ElementsAre(FanReading{"board fan1", "Fan 1", 1500, 0, 1500}));
  EXPECT_FALSE(wasRead("fan1_max"));
  tree.write("sys/class/hwmon/hwmon0/fan2_input", "900\n");
  time.clock().elapse(LinuxSensorChips::searchInterval);
  EXPECT_EQ(settled(own).fans.size(), 2u);
  EXPECT_TRUE(wasRead("fan1_max")) << "it is another chip now";
}

TEST_F(SensorChipsTests, whatSleepsIsLeftAsleep) {
  chip("hwmon0", "amdgpu", "40000");
  tree.write("sys/class/hwmon/hwmon0/device/power/control", "auto\n");
  tree.write("sys/class/hwmon/hwmon0/device/power/runtime_status", "suspended\n");
  tree.write("proc/driver/nvidia/gpus/0000:01:00.0/information", "Model: Card\n");
  const std::string card = "sys/bus/pci/devices/0000:01:00.0/power/";
  tree.write(card + "control", "auto\n");
  tree.write(card + "runtime_status", "suspended\n");
  const auto isRunning = [] {
    void* library = ::dlopen(KORVELL_FAKE_NVIDIA, RTLD_NOW | RTLD_NOLOAD);
    if (!library) return 0;
    const int running = *static_cast<int*>(::dlsym(library, "runningNow"));
    ::dlclose(library);
    return running;
  };
  EXPECT_THAT(settled(own).temperatures, IsEmpty());
  EXPECT_FALSE(wasRead("temp1_input"));
  EXPECT_EQ(isRunning(), 0);

  tree.write("sys/class/hwmon/hwmon0/device/power/runtime_status", "active\n");
  tree.write(card + "runtime_status", "active\n");
  EXPECT_THAT(temperatures(read()), ElementsAre("nvidia: nvidia 51", "amdgpu: amdgpu 40"));
  EXPECT_EQ(isRunning(), 1);
  tree.write(card + "runtime_status", "suspending\n");
  EXPECT_THAT(temperatures(read()), ElementsAre("amdgpu: amdgpu 40"));
  EXPECT_EQ(isRunning(), 0) << "the driver is let go";
}

} // namespace
} // namespace korvell
