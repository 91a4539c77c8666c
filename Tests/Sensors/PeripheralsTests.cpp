#include "Sensors/Peripherals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using Kind = PeripheralBattery::Kind;

TEST(Peripherals, noDeviceTwiceAndNothingThatIsGone) {
  const std::vector<PeripheralReading> readings = {
      {"", 41.6, PeripheralType::unknown, "AA:BB:CC:DD:EE:01", "hid-1"},
      {"Travel Mouse", 90, PeripheralType::mouse, "aa-bb-cc-dd-ee-01", "other"},
      {"Desk Keyboard", std::nullopt, PeripheralType::keyboard, "", "hid-2"},
      {"wrong", 12, PeripheralType::unknown, "", "hid-2"},
      {"Gone", 50, PeripheralType::mouse, "02", "hid-3", false},
      {"No charge", std::nullopt, PeripheralType::mouse, "AA:BB:CC:DD:EE:04"},
      {"Absurd", 101, PeripheralType::mouse, "AA:BB:CC:DD:EE:05"},
      {"Pen", 0, PeripheralType::unknown, "0000"},
      {"Pen", 100, PeripheralType::unknown, "0000"},
  };
  EXPECT_THAT(peripheralBatteries(readings),
              ElementsAre(PeripheralBattery{"Travel Mouse", 42, Kind::mouse},
                          PeripheralBattery{"Desk Keyboard", 12, Kind::keyboard},
                          PeripheralBattery{"Pen", 0, Kind::other},
                          PeripheralBattery{"Pen", 100, Kind::other}));
}

TEST(Peripherals, namesAndKindsForPeople) {
  const auto shown = [](const char* name, PeripheralType type = PeripheralType::unknown) {
    const auto batteries = peripheralBatteries({{name, 50, type}});
    return batteries.size() == 1 ? batteries[0] : PeripheralBattery{};
  };
  EXPECT_EQ(shown("  Acme  ACME\tWireless\nMOUSE  ").name, "Acme Wireless MOUSE");
  EXPECT_EQ(shown(" Acme  Acme Desk Mouse ").name, "Acme Desk Mouse");
  EXPECT_EQ(shown("Acme Desk Mouse").kind, Kind::mouse);
  EXPECT_EQ(shown("Studio Headset").kind, Kind::headphones);
  EXPECT_EQ(shown("Mouse", PeripheralType::keyboard).kind, Kind::keyboard) << "a service knows better";
  EXPECT_EQ(shown("", PeripheralType::headphones).name, "Headphones");
  EXPECT_EQ(shown("\xff\x01").name, "\xef\xbf\xbd\\x01");
  EXPECT_EQ(shown(" ").name, "Device");
}

} // namespace
} // namespace korvell
