#include "Platform/Formats/MacCounters.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(MacCountersTests, pagesBecomeBytes) {
  const MacPageCounts pages{.internal = 10, .external = 7, .purgeable = 4, .wired = 3, .compressor = 2};
  EXPECT_EQ(macMemory(pages, 16384), (MemoryUse{.app = 6 * 16384,
                                                .wired = 3 * 16384,
                                                .compressed = 2 * 16384,
                                                .cached = 11 * 16384,
                                                .swapUsed = 0}));
  EXPECT_EQ(macMemory({.internal = 4, .purgeable = 5}, 1).app, 0u) << "more purgeable than anonymous pages";
  EXPECT_EQ(macMemory({.wired = UINT32_MAX}, 16384).wired, std::uint64_t{UINT32_MAX} * 16384);
}

TEST(MacCountersTests, pressureLevels) {
  EXPECT_EQ(macPressure(2), PressureLevel::warning);
  EXPECT_EQ(macPressure(4), PressureLevel::critical);
  for (const std::optional<int> level : {std::optional<int>{}, {0}, {1}, {3}, {8}, {-1}})
    EXPECT_EQ(macPressure(level), PressureLevel::normal) << level.value_or(-99);
}

TEST(MacCountersTests, disksWithBothCountersCount) {
  const auto statistics = [](Value::Object members) {
    return macDiskCounters(Value::object({{"Statistics", Value(std::move(members))}}));
  };
  EXPECT_EQ(statistics({{"Bytes (Read)", std::uint64_t{5}}, {"Bytes (Write)", 6}, {"Errors", 0}}),
            (ByteCounters{5, 6}));
  EXPECT_EQ(statistics({{"Bytes (Read)", 5}}), std::nullopt);
  EXPECT_EQ(statistics({{"Bytes (Read)", 5}, {"Bytes (Write)", -1}}), std::nullopt);
  EXPECT_EQ(statistics({{"Bytes (Read)", 5}, {"Bytes (Write)", "6"}}), std::nullopt);
  EXPECT_EQ(macDiskCounters(Value::object()), std::nullopt);
  EXPECT_EQ(macDiskCounters(Value::object({{"Statistics", 1}})), std::nullopt);
}

TEST(MacCountersTests, processorsWithStatisticsCount) {
  const auto gpu = [](Value statistics) {
    return macGPUCounters(Value::object({{"PerformanceStatistics", std::move(statistics)}}));
  };
  EXPECT_EQ(gpu(Value::object({{"Device Utilization %", 37}, {"In use system memory", 1 << 20}})),
            (GPUCounters{.utilization = 37, .memoryInUse = 1 << 20}));
  EXPECT_EQ(gpu(Value::object({{"Tiler Utilization %", 3}})), GPUCounters{});
  EXPECT_EQ(gpu(Value::object({{"Device Utilization %", 255}})).value().utilization, 100);
  EXPECT_EQ(gpu(Value::object({{"Device Utilization %", -1}, {"In use system memory", -1}})), GPUCounters{});
  EXPECT_EQ(gpu("none"), std::nullopt);
  EXPECT_EQ(macGPUCounters(Value::object()), std::nullopt);
}

/// A portable on battery; the figures are of several public dumps.
Value onBattery() {
  return Value::object(
      {{"BatteryInstalled", true},
       {"ExternalConnected", false},
       {"IsCharging", false},
       {"AppleRawMaxCapacity", 4200},
       {"DesignCapacity", 5000},
       {"CycleCount", 120},
       {"Temperature", 2985},
       {"TimeRemaining", 312},
       {"Voltage", 12000},
       {"InstantAmperage", std::uint64_t{18446744073709550116u}}, // -1500 mA
       {"BatteryData", Value::object({{"DesignCapacity", 5088}})},
       {"PowerTelemetryData", Value::object({{"SystemLoad", 11408}, {"SystemPowerIn", 8580}})}});
}

TEST(MacBatteryTests, figuresOfAPortable) {
  EXPECT_EQ(macBattery(onBattery(), 83), (BatteryReading{.present = true,
                                                         .percent = 83,
                                                         .isCharging = false,
                                                         .externalConnected = false,
                                                         .cycles = 120,
                                                         .fullCapacity = 4200,
                                                         .designCapacity = 5088,
                                                         .celsius = 29.85,
                                                         .minutesRemaining = 312,
                                                         .systemWatts = 11.408}));
  auto plain = onBattery();
  plain.erase("BatteryData");
  EXPECT_EQ(macBattery(plain, {}).designCapacity, 5000);
  EXPECT_EQ(macBattery(Value::object(), {}), BatteryReading{}) << "nothing published is nothing known";
  const auto implausible = Value::object({{"CycleCount", std::int64_t{1} << 32},
                                          {"AppleRawMaxCapacity", -1},
                                          {"DesignCapacity", std::uint64_t{UINT64_MAX}},
                                          {"Temperature", -27315},
                                          {"TimeRemaining", -1},
                                          {"Voltage", 12000},
                                          {"InstantAmperage", std::int64_t{UINT32_MAX}}});
  EXPECT_EQ(macBattery(implausible, -1), BatteryReading{});
  EXPECT_EQ(macBattery(implausible, 103).percent, 100);
}

TEST(MacBatteryTests, theMachinesDraw) {
  const auto watts = [](Value connected, Value telemetry) {
    auto properties = onBattery();
    properties.set("ExternalConnected", std::move(connected));
    properties.set("PowerTelemetryData", std::move(telemetry));
    return macBattery(properties, {}).systemWatts.value_or(-1);
  };
  const auto both = Value::object({{"SystemPowerIn", 14960}, {"SystemLoad", 9000}});
  EXPECT_DOUBLE_EQ(watts(true, both), 14.96);
  EXPECT_DOUBLE_EQ(watts({}, both), 14.96) << "unknown counts as on power";
  EXPECT_DOUBLE_EQ(watts(false, both), 9) << "stale on battery";
  EXPECT_DOUBLE_EQ(watts(true, Value::object({{"SystemPowerIn", 0}, {"SystemLoad", 9000}})), 9);
  EXPECT_DOUBLE_EQ(watts(true, Value::object({{"SystemLoad", 0}})), 18) << "12 V x 1.5 A";
  EXPECT_DOUBLE_EQ(watts(false, {}), 18);
}

} // namespace
} // namespace korvell
