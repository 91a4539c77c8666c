#include "Sensors/ChipReadings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::Optional;

std::vector<std::string> names(const SensorsSnapshot& snapshot) {
  std::vector<std::string> names;
  for (const auto& reading : snapshot.temperatures) names.push_back(reading.name);
  return names;
}

TEST(ChipReadings, aSensorBearsItsLabelAndWithItsChipWhereLabelsRepeat) {
  const auto snapshot = chipSnapshot({{"nvme", "nvme10", {{1, "Composite", 40.0}}, {}},
                                      {"nvme", "nvme2", {{1, "Composite", 50.0}, {2, "Sensor 1", 51.0}}, {}},
                                      {"acpitz", "", {{1, "", 27.8}}, {}},
                                      {"acpitz", "", {{1, "", std::nullopt}, {2, "", 29.0}}, {}},
                                      {"iwlwifi_1", "", {{1, "Bad\x1b[31m\xff ", 33.0}}, {}}});
  EXPECT_THAT(names(snapshot), ElementsAre("acpitz 1", "acpitz 2 2", "Bad\\x1b[31m\xef\xbf\xbd",
                                           "nvme nvme2 Composite", "nvme nvme10 Composite", "Sensor 1"));
  EXPECT_EQ(snapshot.temperatures[5].chip, "nvme nvme2");
  EXPECT_EQ(snapshot.cpuCelsius, std::nullopt);
}

TEST(ChipReadings, fansOfSeveralChipsAreToldApart) {
  const std::vector<SensorChip> chips = {
      {"nct6775", "nct6775.656", {}, {{1, "", 812.0, 300.0}, {2, "", 0.0}, {3, "", 65535.0}}},
      {"amdgpu", "0000:03:00.0", {}, {{1, "", 1200.0, 0.0, 3300.0}}},
      {"dell_smm", "", {}, {{1, "Processor Fan", 2500.0}, {2, "Processor Fan", std::nullopt}}}};
  EXPECT_THAT(chipSnapshot(chips).fans,
              ElementsAre(FanReading{"nct6775 fan1", "nct6775 Fan 1", 812, 300},
                          FanReading{"nct6775 fan2", "Fan 2"},
                          FanReading{"amdgpu fan1", "amdgpu Fan 1", 1200, 0, 3300},
                          FanReading{"dell_smm fan1", "dell_smm Processor Fan", 2500}));
}

struct PreferenceRow {
  const char* name;
  std::vector<SensorChip> chips;
  std::optional<double> cpu, gpu, soc;
};

TEST(ChipReadings, whichSensorTellsTheFigures) {
  const SensorChip package{"coretemp", "", {{1, "Package id 0", 60.0}, {2, "Core 0", 90.0}}, {}};
  const SensorChip second{"coretemp", "", {{1, "Package id 1", 70.0}}, {}};
  const SensorChip board{"nct6798", "", {{1, "SYSTIN", 20.0}, {2, "CPUTIN", 99.0}}, {}};
  const SensorChip amd{"k10temp", "", {{1, "Tctl", 80.0}, {2, "Tdie", 60.0}, {3, "Tccd1", 40.0}}, {}};
  const SensorChip card{"amdgpu", "", {{1, "edge", 50.0}, {2, "junction", 70.0}}, {}};
  const SensorChip zone{"x86_pkg_temp", "", {{1, "", 61.0}}, {}};
  const PreferenceRow rows[] = {
      {"one package", {board, package, zone}, 60, {}, {}},
      {"two packages", {package, second}, 65, {}, {}},
      {"cores alone", {{"coretemp", "", {{2, "Core 0", 40.0}, {3, "Core 1", 50.0}}, {}}}, 45, {}, {}},
      {"Tdie before Tctl", {amd, card}, 60, 50, {}},
      {"Tctl alone", {{"k10temp", "", {{1, "Tctl", 81.0}}, {}}}, 81, {}, {}},
      {"an old kernel without labels", {{"k10temp", "", {{1, "", 43.0}}, {}}}, 43, {}, {}},
      {"a package that can't be read",
       {{"coretemp", "", {{1, "Package id 0", std::nullopt}}, {}}, board},
       99},
      {"the board's word alone", {board}, 99, {}, {}},
      {"the zone alone", {board, zone}, 61, {}, {}},
      {"a card beside graphics in the processor", {card, {"nvidia", "", {{1, "", 44.0}}, {}}}, {}, 44, {}},
      {"a board with clusters",
       {{"bigcore0-thermal", "", {{1, "", 50.0}}, {}},
        {"littlecore_thermal", "", {{1, "", 40.0}}, {}},
        {"gpu_thermal", "", {{1, "", 42.0}}, {}},
        {"soc_thermal", "", {{1, "", 43.0}}, {}}},
       45,
       42,
       43},
      {"a label that only begins alike", {{"x", "", {{1, "Package id 0", 40.0}}, {}}}, {}, {}, {}},
  };
  for (const auto& row : rows) {
    const auto snapshot = chipSnapshot(row.chips);
    EXPECT_EQ(snapshot.cpuCelsius, row.cpu) << row.name;
    EXPECT_EQ(snapshot.gpuCelsius, row.gpu) << row.name;
    EXPECT_EQ(snapshot.socCelsius, row.soc) << row.name;
  }
  const auto snapshot = chipSnapshot({board, card, amd});
  EXPECT_THAT(names(snapshot), ElementsAre("CPUTIN", "Tctl", "Tdie", "edge", "junction", "SYSTIN", "Tccd1"));
}

} // namespace
} // namespace korvell
