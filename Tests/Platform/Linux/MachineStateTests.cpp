#include "Platform/Linux/LinuxMachineState.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

namespace korvell {
namespace {

/// A tree in the form of the kernel's documents (thermal/sysfs-api, the throttle counters of x86).
struct MachineStateTests : testing::Test {
  TemporaryFolder root;
  FakeClock clock;
  LinuxMachineState state{clock, root / "proc", root / "sys"};

  void write(const std::string& path, const std::string& text) {
    const auto file = root.path() / path;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text << '\n';
  }
  void writeLaptop() {
    write("proc/uptime", "1209700.25 4000000.10");
    const std::string zone = "sys/class/thermal/thermal_zone1/";
    write(zone + "type", "acpitz");
    write(zone + "temp", "50000");
    write(zone + "trip_point_0_type", "critical");
    write(zone + "trip_point_0_temp", "105000");
    write(zone + "trip_point_1_type", "active");
    write(zone + "trip_point_1_temp", "45000");
    write(zone + "trip_point_2_type", "passive");
    write(zone + "trip_point_2_temp", "95000");
    write("sys/class/thermal/thermal_zone0/type", "iwlwifi_1");
    write("sys/class/thermal/thermal_zone0/temp", "-273000");
    write("sys/class/thermal/cooling_device0/type", "Processor");
    write("sys/class/thermal/cooling_device0/cur_state", "0");
    write("sys/class/thermal/cooling_device1/type", "Fan");
    write("sys/class/thermal/cooling_device1/cur_state", "1");
    for (const std::string cpu : {"cpu0", "cpu1"}) {
      write("sys/devices/system/cpu/" + cpu + "/topology/physical_package_id", "0");
      write("sys/devices/system/cpu/" + cpu + "/thermal_throttle/package_throttle_total_time_ms", "700");
    }
  }
  ThermalState after(Seconds span) {
    clock.advance(span);
    state.refresh();
    return state.thermalState();
  }
};

TEST_F(MachineStateTests, aMachineThatTellsNothingIsCool) {
  EXPECT_EQ(after(Seconds(1)), ThermalState::nominal);
  EXPECT_EQ(state.uptime(), Seconds(0));
}

TEST_F(MachineStateTests, zonesCoolersAndCounters) {
  writeLaptop();
  EXPECT_EQ(after(Seconds(1)), ThermalState::nominal) << "a fan that runs is no trouble";
  EXPECT_EQ(state.uptime(), Seconds(1'209'700.25));

  write("sys/class/thermal/thermal_zone1/temp", "86000");
  EXPECT_EQ(after(Seconds(6)), ThermalState::fair);
  write("sys/class/thermal/thermal_zone1/temp", "101000");
  EXPECT_EQ(after(Seconds(6)), ThermalState::critical);
  write("sys/class/thermal/thermal_zone1/temp", "50000");
  write("sys/class/thermal/cooling_device0/cur_state", "2");
  EXPECT_EQ(after(Seconds(6)), ThermalState::serious);
  write("sys/class/thermal/cooling_device0/cur_state", "0");
  write("sys/devices/system/cpu/cpu0/thermal_throttle/package_throttle_total_time_ms", "1300");
  EXPECT_EQ(after(Seconds(6)), ThermalState::serious) << "600 of 6,000 ms";
  EXPECT_EQ(after(Seconds(6)), ThermalState::nominal) << "and no more since";
}

TEST_F(MachineStateTests, whatAppearsIsFoundWithinAMinute) {
  after(Seconds(1));
  writeLaptop();
  write("sys/class/thermal/thermal_zone1/temp", "99000");
  EXPECT_EQ(after(Seconds(59)), ThermalState::nominal);
  EXPECT_EQ(after(Seconds(2)), ThermalState::serious);
}

} // namespace
} // namespace korvell
