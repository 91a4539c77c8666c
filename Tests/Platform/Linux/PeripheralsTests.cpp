#include "FakeBus.h"
#include "Platform/Linux/LinuxPeripherals.h"
#include "Sensors/Peripherals.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/FixturesFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = PeripheralBattery::Kind;

/// As UPower's documentation describes the properties of a device; some of them.
struct UPowerEntry {
  const char *path, *model, *serial, *nativePath;
  unsigned type, state;
  double percentage;
  bool powersMachine = false, isPresent = true;
};
/// As BlueZ's documentation describes Device1 and Battery1.
struct BlueZEntry {
  const char *path, *address, *alias, *icon;
  bool isConnected;
  int percentage; ///< below 0: the object has no battery
};

/// A bus with both services, or with one that does not run.
struct PeripheralsTests : testing::Test {
  TemporaryFolder folder;
  std::vector<UPowerEntry> upower;
  std::vector<BlueZEntry> bluez;
  bool hasUPower = true, hasBlueZ = true;
  std::atomic<bool> startedSomebody = false;
  FakeBus bus{folder / "bus", [this](sd_bus_message* call) { return answer(call); }};

  int answer(sd_bus_message* call) {
    if (sd_bus_message_get_auto_start(call) != 0) startedSomebody = true;
    const std::string_view service = sd_bus_message_get_destination(call);
    const bool isUPower = service == "org.freedesktop.UPower";
    if (isUPower ? !hasUPower : !hasBlueZ)
      return sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.ServiceUnknown", "nobody");
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    if (!isUPower) {
      appendObjects(reply);
    } else if (sd_bus_message_is_method_call(call, nullptr, "EnumerateDevices")) {
      sd_bus_message_open_container(reply, 'a', "o");
      for (const auto& entry : upower) sd_bus_message_append(reply, "o", entry.path);
      sd_bus_message_append(reply, "o", "/gone");
      sd_bus_message_close_container(reply);
    } else if (!appendDevice(reply, sd_bus_message_get_path(call))) {
      sd_bus_message_unref(reply);
      return sd_bus_reply_method_errorf(call, "org.freedesktop.DBus.Error.UnknownMethod", "no object");
    }
    sd_bus_send(nullptr, reply, nullptr);
    sd_bus_message_unref(reply);
    return 1;
  }

  bool appendDevice(sd_bus_message* reply, std::string_view path) {
    for (const auto& entry : upower) {
      if (path != entry.path) continue;
      sd_bus_message_append(reply, "a{sv}", 10, "NativePath", "s", entry.nativePath, "Vendor", "s", "Acme",
                            "Model", "s", entry.model, "Serial", "s", entry.serial, "UpdateTime", "t",
                            std::uint64_t(1), "Type", "u", entry.type, "PowerSupply", "b",
                            int(entry.powersMachine), "IsPresent", "b", int(entry.isPresent), "Percentage",
                            "d", entry.percentage, "State", "u", entry.state);
      return true;
    }
    return false;
  }

  void appendObjects(sd_bus_message* reply) {
    sd_bus_message_open_container(reply, 'a', "{oa{sa{sv}}}");
    sd_bus_message_append(reply, "{oa{sa{sv}}}", "/org/bluez/hci0", 1, "org.bluez.Adapter1", 1, "Powered",
                          "b", 1);
    for (const auto& entry : bluez) {
      sd_bus_message_open_container(reply, 'e', "oa{sa{sv}}");
      sd_bus_message_append(reply, "o", entry.path);
      sd_bus_message_open_container(reply, 'a', "{sa{sv}}");
      sd_bus_message_append(reply, "{sa{sv}}", "org.bluez.Device1", 5, "Address", "s", entry.address, "Alias",
                            "s", entry.alias, "Icon", "s", entry.icon, "Connected", "b",
                            int(entry.isConnected), "UUIDs", "as", 1, "x");
      if (entry.percentage >= 0)
        sd_bus_message_append(reply, "{sa{sv}}", "org.bluez.Battery1", 2, "Percentage", "y", entry.percentage,
                              "Source", "s", "HFP");
      sd_bus_message_close_container(reply);
      sd_bus_message_close_container(reply);
    }
    sd_bus_message_close_container(reply);
  }

  std::vector<PeripheralBattery> batteries(const std::string& sys = "/nowhere") {
    return peripheralBatteries(LinuxPeripherals(bus.address(), sys, Seconds(20)).read());
  }
};

TEST_F(PeripheralsTests, bothServicesAndNoDeviceTwice) {
  upower = {
      {"/d/line_power_AC", "", "", "AC", 1, 0, 0, true},
      {"/d/battery_BAT0", "Laptop pack", "1", "BAT0", 2, 2, 71, true},
      {"/d/mouse", "Desk Mouse", "AA:BB:CC:00:00:01", "/org/bluez/hci0/dev_AA_BB_CC_00_00_01", 5, 2, 61.4},
      {"/d/keyboard", "Desk Keyboard", "c5-29", "hidpp_battery_0", 6, 2, 8},
      {"/d/off", "Old Mouse", "c5-30", "hidpp_battery_1", 5, 0, 0},
      {"/d/away", "Pad", "c5-31", "hidpp_battery_2", 13, 2, 50, false, false},
      {"/d/empty", "Pen", "c5-32", "hidpp_battery_3", 9, 2, 0},
  };
  bluez = {
      {"/org/bluez/hci0/dev_AA_BB_CC_00_00_01", "AA:BB:CC:00:00:01", "My mouse", "input-mouse", true, 60},
      {"/org/bluez/hci0/dev_AA_BB_CC_00_00_02", "AA:BB:CC:00:00:02", "Studio  Buds", "audio-headset", true,
       100},
      {"/org/bluez/hci0/dev_AA_BB_CC_00_00_03", "AA:BB:CC:00:00:03", "Gone", "input-mouse", false, 5},
      {"/org/bluez/hci0/dev_AA_BB_CC_00_00_04", "AA:BB:CC:00:00:04", "Speaker", "audio-card", true, -1}};
  EXPECT_THAT(batteries(), ElementsAre(PeripheralBattery{"Desk Mouse", 61, Kind::mouse},
                                       PeripheralBattery{"Desk Keyboard", 8, Kind::keyboard},
                                       PeripheralBattery{"Studio Buds", 100, Kind::headphones},
                                       PeripheralBattery{"Pen", 0, Kind::other}));
  EXPECT_FALSE(startedSomebody);
}

TEST_F(PeripheralsTests, withoutUPowerTheDriversEntries) {
  hasUPower = false;
  bluez = {{"/org/bluez/hci0/dev_AA_BB_CC_DD_EE_01", "AA:BB:CC:DD:EE:01", "Bluetooth Keys", "input-keyboard",
            true, 33}};
  const auto entry = [&](const std::string& name, const char* scope, const std::string& uevent) {
    folder.write("sys/class/power_supply/" + name + "/scope", scope);
    folder.write("sys/class/power_supply/" + name + "/uevent", uevent);
  };
  entry("hid-aa:bb:cc:dd:ee:01-battery", "Device\n",
        "POWER_SUPPLY_ONLINE=1\nPOWER_SUPPLY_CAPACITY=34\nPOWER_SUPPLY_MODEL_NAME=Keys\n");
  entry("hidpp_battery_0", "Device\n",
        "POWER_SUPPLY_ONLINE=0\nPOWER_SUPPLY_CAPACITY=50\nPOWER_SUPPLY_MODEL_NAME=Switched off\n");
  entry("wacom_battery_0", "Device\n", "POWER_SUPPLY_CAPACITY_LEVEL=Normal\nPOWER_SUPPLY_MODEL_NAME=Level\n");
  entry("BAT0", "System\n", "POWER_SUPPLY_CAPACITY=99\nPOWER_SUPPLY_MODEL_NAME=Laptop pack\n");
  EXPECT_THAT(batteries(folder / "sys"), ElementsAre(PeripheralBattery{"Keys", 34, Kind::keyboard}));
  hasBlueZ = false;
  EXPECT_EQ(batteries(fixturePath("Linux/laptop/sys")).size(), 1u);
  hasUPower = true;
  EXPECT_THAT(batteries(folder / "sys"), IsEmpty()) << "UPower answers for them, and has none";
}

TEST_F(PeripheralsTests, aSilenceHasAReason) {
  hasUPower = hasBlueZ = false;
  EXPECT_EQ(askUPower(bus.address(), Seconds(20)).silence, "UPower does not run here.");
  EXPECT_EQ(askBlueZ(bus.address(), Seconds(20)).silence, "BlueZ does not run here.");
  EXPECT_EQ(askBlueZ("", Seconds(20)).silence, "There is no message bus.");
  const FakeBus hanging(folder / "hanging", [](sd_bus_message*) { return 1; });
  EXPECT_EQ(askUPower(hanging.address(), Seconds(0.05)).silence, "UPower did not answer in time.");
}

} // namespace
} // namespace korvell
