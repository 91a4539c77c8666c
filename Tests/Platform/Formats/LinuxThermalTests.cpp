#include "Platform/Formats/LinuxThermal.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

using enum ThermalState;
using Kind = ThermalTrip::Kind;

TEST(LinuxThermalTests, states) {
  const std::vector<ThermalTrip> trips = {{Kind::passive, 85}, {Kind::critical, 105}};
  const auto at = [&](double celsius) { return ThermalReading{.zones = {{40, trips}, {celsius, trips}}}; };
  const auto throttled = [](std::uint64_t zero, std::uint64_t one) {
    return ThermalReading{.throttled = {{0, zero}, {1, one}}};
  };
  struct Row {
    const char* name;
    ThermalReading reading;
    Seconds since;
    ThermalState expected;
  };
  const Row rows[] = {
      {"nothing to read", {}, Seconds(6), nominal},
      {"cool", at(74.9), Seconds(6), nominal},
      {"ten degrees below passive", at(75), Seconds(6), fair},
      {"passive", at(85), Seconds(6), serious},
      {"five degrees below critical", at(100), Seconds(6), critical},
      {"only a critical point, far", {.zones = {{84.9, {{Kind::critical, 100}}}}}, {}, nominal},
      {"only a critical point, near", {.zones = {{85, {{Kind::critical, 100}}}}}, {}, fair},
      {"near hot", {.zones = {{91, {{Kind::hot, 96}}}}}, {}, critical},
      {"slowed by a cooling device", {.processorsAreSlowed = true}, {}, serious},
      {"a twentieth of six seconds", throttled(1'300, 0), Seconds(6), nominal},
      {"more than that", throttled(1'301, 0), Seconds(6), serious},
      {"the other package", throttled(0, 301), Seconds(6), serious},
      {"without a reading before", throttled(9'999, 9'999), Seconds(0), nominal},
      {"a counter that began again", throttled(5, 0), Seconds(6), nominal}};
  for (const auto& row : rows)
    EXPECT_EQ(thermalState(row.reading, {{0, 1'000}, {1, 0}}, row.since), row.expected) << row.name;
  EXPECT_EQ(thermalState(throttled(9'999, 9'999), {}, Seconds(6)), nominal) << "new packages";
}

TEST(LinuxThermalTests, texts) {
  const std::pair<const char*, std::optional<double>> temperatures[] = {
      {"27800\n", 27.8},           {"150000\n", 150},  {"150001\n", std::nullopt}, {"0\n", std::nullopt},
      {"-273000\n", std::nullopt}, {"", std::nullopt}, {"hot", std::nullopt}};
  for (const auto& [text, celsius] : temperatures) EXPECT_EQ(parseMillidegrees(text), celsius) << text;
  EXPECT_EQ(parseTripKind("passive\n"), Kind::passive);
  EXPECT_EQ(parseTripKind("active\n"), std::nullopt);
  for (const char* slows : {"Processor\n", "cpufreq-cpu0\n", "thermal-cpufreq-0\n"})
    EXPECT_TRUE(slowsProcessors(slows)) << slows;
  for (const char* other : {"Fan\n", "intel_powerclamp\n", "TCC Offset\n", ""})
    EXPECT_FALSE(slowsProcessors(other)) << other;
}

} // namespace
} // namespace korvell
