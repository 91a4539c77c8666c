#include "Platform/Formats/BluetoothProfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// In the form of public listings; devices that are not connected keep the levels of another day.
constexpr const char* listing = R"({"SPBluetoothDataType":[{
  "controller_properties":{"controller_state":"attrib_on"},
  "device_connected":[
    {"Buds":{"device_address":"AA:BB:CC:00:00:01","device_batteryLevelCase":"12 %",
             "device_batteryLevelLeft":"100 %","device_batteryLevelRight":"95 %","device_minorType":"Headphones"}},
    {"One ear":{"device_batteryLevelRight":"40%","device_minorType":"Headset"}},
    {"Desk Mouse":{"device_address":"AA:BB:CC:00:00:02","device_batteryLevelMain":"77","device_minorType":"Mouse"}},
    {"Speaker":{"device_minorType":"Speakers"}},
    {"Odd":{"device_batteryLevelMain":"full"}}, 7],
  "device_not_connected":[{"Old":{"device_batteryLevelMain":"5 %"}}]}]})";

TEST(BluetoothProfileTests, connectedDevicesWithACharge) {
  EXPECT_THAT(parseBluetoothProfile(listing),
              ElementsAre(PeripheralReading{"Buds", 95, PeripheralType::headphones, "AA:BB:CC:00:00:01"},
                          PeripheralReading{"One ear", 40, PeripheralType::headphones},
                          PeripheralReading{"Desk Mouse", 77, PeripheralType::mouse, "AA:BB:CC:00:00:02"}));
  for (const auto* text : {"", "{}", "[]", R"({"SPBluetoothDataType":{}})", R"({"SPBluetoothDataType":[[]]})",
                           R"({"SPBluetoothDataType":[{"device_connected":[{"X":1}]}]})", "{\"SPB"})
    EXPECT_THAT(parseBluetoothProfile(text), IsEmpty()) << text;
}

} // namespace
} // namespace korvell
