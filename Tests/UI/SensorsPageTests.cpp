#include "UI/Gallery/ListModel.h"
#include "UI/Sensors/SensorsPage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

SensorsSnapshot machine() {
  using enum SensorKind;
  return {
      .cpuCelsius = 57,
      .fans = {{"a fan1", "CPU fan", 1200, 300, 2100}, {"a fan2", "Fan 2", 812.6, 300}, {"a fan3", "Fan 3"}},
      .temperatures = {{"Core 0", 110, cpu, "coretemp"},
                       {"Core 1", 20, cpu, "coretemp"},
                       {"edge", 65, gpu, "amdgpu"},
                       {"Package", 8, other, "coretemp"}}};
}

TEST(SensorsPageTests, fansAndThenTemperaturesByChip) {
  ListModel model;
  EXPECT_FALSE(sensorsPage(model, TemperatureUnit::celsius).isMeasured);
  model.sensors.set(machine());
  const auto page = sensorsPage(model, TemperatureUnit::celsius);
  EXPECT_EQ(page.summary, "4 sensors, 3 fans");
  EXPECT_THAT(page.leads, ElementsAre(SensorsPage::Lead{"CPU", {"57", "°C"}}))
      << "what nobody tells is absent";
  ASSERT_THAT(page.groups, SizeIs(3));
  EXPECT_EQ(page.groups[0].title + " " + page.groups[1].title + " " + page.groups[2].title,
            "Fans coretemp amdgpu");
  const auto& fans = page.groups[0].rows;
  EXPECT_DOUBLE_EQ(*fans[0].level, 0.5);
  EXPECT_EQ(fans[0].least + " " + fans[0].most, "300 2,100");
  EXPECT_EQ(fans[0].figure, (Figure{"1,200", "rpm"}));
  EXPECT_EQ(fans[0].spoken, "CPU fan, 1,200 revolutions a minute");
  EXPECT_FALSE(fans[1].level) << "no bar without a range";
  EXPECT_EQ(fans[1].figure.number + " " + fans[2].figure.number, "813 0");
  const auto& cores = page.groups[1].rows;
  ASSERT_THAT(cores, SizeIs(3));
  EXPECT_EQ(*cores[0].level + *cores[1].level + *cores[2].level, 1) << "20 to 110 °C, and never beyond";
  EXPECT_EQ(cores[0].figure, (Figure{"110", "°C"}));
}

TEST(SensorsPageTests, inFahrenheitAndWithoutChips) {
  ListModel model;
  auto read = machine();
  for (auto& reading : read.temperatures) reading.chip.reset();
  model.sensors.set(read);
  const auto page = sensorsPage(model, TemperatureUnit::fahrenheit);
  EXPECT_EQ(page.leads[0].figure, (Figure{"135", "°F"}));
  EXPECT_EQ(page.groups[1].title, "CPU") << "by what they measure";
  EXPECT_EQ(page.groups[1].rows[0].spoken, "Core 0, 230°F");
  EXPECT_EQ(*page.groups[1].rows[0].level, 1) << "the bars are those of degrees Celsius";
  model.sensors.set(SensorsSnapshot{});
  const auto none = sensorsPage(model, TemperatureUnit::fahrenheit);
  EXPECT_TRUE(none.isMeasured);
  EXPECT_THAT(none.groups, IsEmpty());
  EXPECT_EQ(none.summary, "");
}

} // namespace
} // namespace korvell
