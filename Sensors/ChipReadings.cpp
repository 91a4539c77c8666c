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
void giveNames(std::vector<Named>& all, const std::vector<std::string>& chips) {
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
      each.name = unlabelled[each.chip] == 1 ? chip : chip + " " + std::to_string(each.number);
    else if (counts.at(each.name) > 1)
      each.name = chip + " " + each.name;
  }
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

ChipLayout::ChipLayout(const std::vector<SensorChip>& chips) : chips_(chips) {
  const auto names = chipNames(chips);
  addTemperatures(names);
  addFans(names);
}

void ChipLayout::addTemperatures(const std::vector<std::string>& names) {
  std::vector<Named> all;
  for (std::size_t i = 0; i < chips_.size(); ++i)
    for (const auto& sensor : chips_[i].temperatures)
      all.push_back({i, sensorText(sensor.label), sensor.number});
  giveNames(all, names);
  auto named = all.begin();
  for (std::size_t i = 0; i < chips_.size(); ++i)
    for (std::size_t j = 0; j < chips_[i].temperatures.size(); ++j) {
      const SensorPlace place{chips_[i].driver, chips_[i].temperatures[j].label};
      temperatures_.push_back({i,
                               j,
                               {(named++)->name, 0, sensorKind(place, linuxFigures), names[i]},
                               figureRank(SensorKind::cpu, place, linuxFigures),
                               figureRank(SensorKind::gpu, place, linuxFigures),
                               figureRank(SensorKind::soc, place, linuxFigures)});
    }
  std::ranges::stable_sort(temperatures_, standsBefore, &Temperature::reading);
}

void ChipLayout::addFans(const std::vector<std::string>& names) {
  std::vector<Named> all;
  for (std::size_t i = 0; i < chips_.size(); ++i)
    for (const auto& fan : chips_[i].fans) {
      auto label = sensorText(fan.label);
      all.push_back({i, label.empty() ? numberedFan(fan.number) : std::move(label), fan.number});
    }
  giveNames(all, names);
  auto named = all.begin();
  for (std::size_t i = 0; i < chips_.size(); ++i)
    for (std::size_t j = 0; j < chips_[i].fans.size(); ++j) {
      const auto& fan = chips_[i].fans[j];
      fans_.push_back({i,
                       j,
                       {names[i] + " fan" + std::to_string(fan.number), (named++)->name, 0,
                        fanLimit(fan.minRPM), fanLimit(fan.maxRPM)}});
    }
}

bool ChipLayout::fits(const std::vector<SensorChip>& chips) const {
  const auto isSameSensor = [](const ChipTemperature& a, const ChipTemperature& b) {
    return a.number == b.number && a.label == b.label;
  };
  const auto isSameFan = [](const ChipFan& a, const ChipFan& b) {
    return a.number == b.number && a.label == b.label && a.minRPM == b.minRPM && a.maxRPM == b.maxRPM;
  };
  return std::ranges::equal(chips, chips_, [&](const SensorChip& a, const SensorChip& b) {
    return a.driver == b.driver && a.device == b.device &&
           std::ranges::equal(a.temperatures, b.temperatures, isSameSensor) &&
           std::ranges::equal(a.fans, b.fans, isSameFan);
  });
}

SensorsSnapshot ChipLayout::snapshot(const std::vector<SensorChip>& chips) const {
  SensorsSnapshot snapshot;
  BestRanked cpu, gpu, soc;
  const auto count = [](BestRanked& best, const std::optional<int>& rank, double celsius) {
    if (rank) best.add(*rank, celsius);
  };
  snapshot.temperatures.reserve(temperatures_.size());
  for (const auto& each : temperatures_) {
    const auto& celsius = chips[each.chip].temperatures[each.sensor].celsius;
    if (!celsius || !isTemperature(*celsius)) continue;
    snapshot.temperatures.push_back(each.reading);
    snapshot.temperatures.back().celsius = *celsius;
    count(cpu, each.cpuRank, *celsius);
    count(gpu, each.gpuRank, *celsius);
    count(soc, each.socRank, *celsius);
  }
  for (const auto& each : fans_) {
    const auto& rpm = chips[each.chip].fans[each.fan].rpm;
    if (!rpm || !isFanSpeed(*rpm)) continue;
    snapshot.fans.push_back(each.reading);
    snapshot.fans.back().rpm = *rpm;
  }
  snapshot.cpuCelsius = cpu.mean();
  snapshot.gpuCelsius = gpu.mean();
  snapshot.socCelsius = soc.mean();
  return snapshot;
}

SensorsSnapshot chipSnapshot(const std::vector<SensorChip>& chips) {
  return ChipLayout(chips).snapshot(chips);
}

} // namespace korvell
