#include "Sensors/NaturalOrder.h"
#include "Sensors/SensorsReader.h"
#include "Tests/Fakes/FakeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

struct SensorsReaderTests : testing::Test {
  std::shared_ptr<FakeController::Script> script = std::make_shared<FakeController::Script>();
  std::shared_ptr<FakeTemperatureEvents::Services> services =
      std::make_shared<FakeTemperatureEvents::Services>();
  int opened = 0;
  bool hasEvents = true;
  TemperatureSources sources{.openController =
                                 [this] {
                                   ++opened;
                                   return std::make_unique<FakeController>(script);
                                 },
                             .openEvents = [this]() -> std::unique_ptr<TemperatureEvents> {
                               if (!hasEvents) return nullptr;
                               return std::make_unique<FakeTemperatureEvents>(services);
                             }};
  SensorsReader reader{sources};

  void key(const std::string& name, std::uint8_t celsius) { script->keys[name] = {"sp78", {celsius, 0}}; }
};

std::vector<std::string> names(const SensorsSnapshot& snapshot) {
  std::vector<std::string> names;
  for (const auto& reading : snapshot.temperatures) names.push_back(reading.name);
  return names;
}

TEST_F(SensorsReaderTests, theEventsOfAMacWithSeveralClusters) {
  *services = {{"pACC MTR Temp Sensor2", 60.0},
               {"pACC MTR Temp Sensor10", 50.0},
               {"eACC MTR Temp Sensor0", 40.0},
               {"PMU tdie1", 90.0},
               {"GPU MTR Temp Sensor1", 44.0},
               {"SOC MTR Temp Sensor0", 47.0},
               {"PMU tcal", 51.8},
               {std::nullopt, 33.0},
               {"NAND CH0 temp", 31.0},
               {"gas gauge battery", std::nullopt},
               {"NAND CH0 temp", 99.0}};
  key("TC0D", 77); // asked only where the events tell nothing
  const auto snapshot = reader.read();
  EXPECT_THAT(snapshot.cpuCelsius, Optional(50.0));
  EXPECT_THAT(snapshot.gpuCelsius, Optional(44.0));
  EXPECT_THAT(snapshot.socCelsius, Optional(47.0));
  EXPECT_THAT(names(snapshot),
              ElementsAre("eACC MTR Temp Sensor0", "pACC MTR Temp Sensor2", "pACC MTR Temp Sensor10",
                          "PMU tdie1", "GPU MTR Temp Sensor1", "SOC MTR Temp Sensor0", "NAND CH0 temp"));
  EXPECT_THAT(snapshot.fans, IsEmpty());
  reader.read();
  EXPECT_EQ(opened, 1);

  *services = {{"PMU tdie2", 30.0}, {"PMU tdie1", 50.0}, {"PMU tdev1", 20.0}};
  SensorsReader another(sources);
  EXPECT_THAT(another.read().cpuCelsius, Optional(40.0));
  EXPECT_EQ(another.read().gpuCelsius, std::nullopt);
}

TEST_F(SensorsReaderTests, theKeysOfAMacWithoutEvents) {
  *services = {{"PMU tcal", 51.8}}; // a client that yields no sensor
  key("TC1C", 60);
  key("TC2C", 70);
  key("TG0D", 66);
  key("TB0T", 30);
  key("TA0P", 151);
  key("Tm0P", 0);
  auto snapshot = reader.read();
  EXPECT_THAT(names(snapshot), ElementsAre("CPU Core 1", "CPU Core 2", "GPU Die", "Battery"));
  EXPECT_THAT(snapshot.cpuCelsius, Optional(65.0));
  EXPECT_THAT(snapshot.gpuCelsius, Optional(66.0));
  key("TC0P", 50);
  key("TG0P", 55);
  snapshot = reader.read();
  EXPECT_THAT(snapshot.cpuCelsius, Optional(50.0));
  EXPECT_THAT(snapshot.gpuCelsius, Optional(55.0));
  key("TC0E", 90); // "CPU Die (E)" is not the die
  EXPECT_THAT(reader.read().cpuCelsius, Optional(50.0));
  key("TC0D", 80);
  EXPECT_THAT(reader.read().cpuCelsius, Optional(80.0));
  EXPECT_EQ(reader.read().socCelsius, std::nullopt);
}

TEST_F(SensorsReaderTests, theFansOfTheController) {
  const auto rpm = [](int value) {
    return FakeController::Key{"fpe2", {std::uint8_t(value * 4 >> 8), std::uint8_t(value * 4)}};
  };
  script->keys["FNum"] = {"ui8 ", {3}};
  script->keys["F0Ac"] = rpm(2000);
  script->keys["F0Mn"] = rpm(1200);
  script->keys["F0Mx"] = rpm(5927);
  script->keys["F0ID"] = {"{fds", {0, 1, 2, 0, 'L', 'e', 'f', 't', ' ', 's', 'i', 'd', 'e', ' ', ' ', 0}};
  script->keys["F2Ac"] = {"flt ", {0, 0, 0, 0}};
  EXPECT_THAT(reader.read().fans,
              ElementsAre(FanReading{"F0", "Left side", 2000, 1200, 5927}, FanReading{"F2", "Fan 3"}));
  script->keys["FNum"] = {"ui32", {0xff, 0xff, 0xff, 0xff}};
  EXPECT_EQ(reader.read().fans.size(), 2u) << "a count that can't be true is not followed";
}

TEST_F(SensorsReaderTests, aMachineWithNothing) {
  hasEvents = false;
  sources.openController = nullptr;
  EXPECT_EQ(reader.read(), SensorsSnapshot{});
}

TEST(NaturalOrder, countsAsPeopleDo) {
  const char* sorted[] = {"",        "Core",     "Core 2", "core 2", "Core 02 b",
                          "Core 10", "Core 10a", "Fan 1",  "fan 12"};
  for (std::size_t i = 0; i < std::size(sorted); ++i)
    for (std::size_t j = 0; j < std::size(sorted); ++j)
      EXPECT_EQ(comesNaturallyBefore(sorted[i], sorted[j]), i < j) << sorted[i] << " / " << sorted[j];
}

} // namespace
} // namespace korvell
