#include "Sensors/ChipReadings.h"

#include "Sensors/SensorFigures.h"
#include "Sensors/SensorNames.h"

#include <algorithm>
#include <map>

namespace korvell {

namespace {

using Counts = std::map<std::string, int>;

Counts countOf(const std::vector<std::string>& names) {
  Counts counts;
  for (const auto& name : names) ++counts[name];
  return counts;
}

/// Those that are still alike get numbers.
void numberAlike(std::vector<std::string>& names) {
  const auto counts = countOf(names);
  Counts given;
  for (auto& name : names)
    if (counts.at(name) > 1) name += " " + std::to_string(++given[name]);
}

/// One sensor or fan among those of all chips.
struct Named {
  std::size_t chip = 0;
  std::string name; ///< first the label, "" without one
  int number = 0;
};

/// Gives names to those without a label, and the chip's before labels that stand twice.
void giveNames(std::vector<Named>& all, const std::vector<std::string>& chips, auto&& withoutLabel) {
  std::vector<std::string> labels;
  std::map<std::size_t, int> unlabelled;
  for (const auto& each : all) {
    labels.push_back(each.name);
    unlabelled[each.chip] += each.name.empty();
  }
  const auto counts = countOf(labels);
  for (auto& each : all) {
    const auto& chip = chips[each.chip];
    if (each.name.empty())
      each.name = withoutLabel(chip, each.number, unlabelled[each.chip] == 1);
    else if (counts.at(each.name) > 1)
      each.name = chip + " " + each.name;
  }
}

std::string unlabelledTemperature(const std::string& chip, int number, bool isOnly) {
  return isOnly ? chip : chip + " " + std::to_string(number);
}

} // namespace

std::vector<std::string> chipNames(const std::vector<SensorChip>& chips) {
  std::vector<std::string> names;
  for (const auto& chip : chips) names.push_back(sensorText(chip.driver));
  const auto counts = countOf(names);
  for (std::size_t i = 0; i < chips.size(); ++i) {
    const auto device = sensorText(chips[i].device);
    if (counts.at(names[i]) > 1 && !device.empty()) names[i] += " " + device;
  }
  numberAlike(names);
  return names;
}

std::vector<TemperatureReading> chipTemperatures(const std::vector<SensorChip>& chips) {
  const auto names = chipNames(chips);
  std::vector<Named> all;
  std::vector<TemperatureReading> readings;
  for (std::size_t i = 0; i < chips.size(); ++i)
    for (const auto& sensor : chips[i].temperatures) {
      // Whether a label repeats does not depend on which of them has a value just now.
      all.push_back({i, sensorText(sensor.label), sensor.number});
    }
  giveNames(all, names, unlabelledTemperature);
  auto named = all.begin();
  for (const auto& chip : chips)
    for (const auto& sensor : chip.temperatures) {
      const auto& [place, name, number] = *named++;
      if (!sensor.celsius || !isTemperature(*sensor.celsius)) continue;
      const auto kind = sensorKind({chip.driver, sensor.label}, linuxFigures);
      readings.push_back({name, *sensor.celsius, kind, names[place]});
    }
  return readings;
}

std::vector<FanReading> chipFans(const std::vector<SensorChip>& chips) {
  const auto names = chipNames(chips);
  std::vector<Named> all;
  for (std::size_t i = 0; i < chips.size(); ++i)
    for (const auto& fan : chips[i].fans) {
      auto label = sensorText(fan.label);
      all.push_back({i, label.empty() ? numberedFan(fan.number) : std::move(label), fan.number});
    }
  giveNames(all, names, unlabelledTemperature);
  std::vector<FanReading> readings;
  auto named = all.begin();
  for (const auto& chip : chips)
    for (const auto& fan : chip.fans) {
      const auto& [place, name, number] = *named++;
      if (!fan.rpm || !isFanSpeed(*fan.rpm)) continue;
      readings.push_back({names[place] + " fan" + std::to_string(number), name, *fan.rpm,
                          fanLimit(fan.minRPM), fanLimit(fan.maxRPM)});
    }
  return readings;
}

SensorsSnapshot chipSnapshot(const std::vector<SensorChip>& chips) {
  std::vector<SensorPlace> places;
  for (const auto& chip : chips)
    for (const auto& sensor : chip.temperatures)
      if (sensor.celsius && isTemperature(*sensor.celsius))
        places.push_back({chip.driver, sensor.label, *sensor.celsius});
  SensorsSnapshot snapshot{.cpuCelsius = figure(SensorKind::cpu, places, linuxFigures),
                           .gpuCelsius = figure(SensorKind::gpu, places, linuxFigures),
                           .socCelsius = figure(SensorKind::soc, places, linuxFigures),
                           .fans = chipFans(chips),
                           .temperatures = chipTemperatures(chips)};
  sortNaturally(snapshot.temperatures);
  return snapshot;
}

} // namespace korvell
