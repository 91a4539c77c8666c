#include "Sensors/SensorsReader.h"

#include "Sensors/ControllerFans.h"
#include "Sensors/SensorFigures.h"
#include "Sensors/SensorNames.h"

#include <algorithm>

namespace korvell {

namespace {

void add(SensorsSnapshot& snapshot, const std::map<std::string, double>& temperatures,
         std::span<const FigureRow> table) {
  std::vector<SensorPlace> places;
  for (const auto& [name, celsius] : temperatures) {
    places.push_back({"", name, celsius});
    snapshot.temperatures.push_back({sensorText(name), celsius, sensorKind(places.back(), table)});
  }
  snapshot.cpuCelsius = figure(SensorKind::cpu, places, table);
  snapshot.gpuCelsius = figure(SensorKind::gpu, places, table);
  snapshot.socCelsius = figure(SensorKind::soc, places, table);
  std::ranges::sort(snapshot.temperatures, standsBefore);
}

} // namespace

void SensorsReader::open() {
  if (std::exchange(isOpen_, true)) return;
  if (auto controller = sources_.openController ? sources_.openController() : nullptr)
    smc_.emplace(std::move(controller));
  if (auto events = sources_.openEvents ? sources_.openEvents() : nullptr) events_.emplace(std::move(events));
}

std::map<std::string, double> SensorsReader::controllerTemperatures() {
  std::map<std::string, double> readings;
  if (!smc_) return readings;
  for (const auto& [key, name] : controllerKeys)
    if (const auto celsius = smc_->value(key); celsius && isTemperature(*celsius))
      readings.emplace(name, *celsius);
  return readings;
}

SensorsSnapshot SensorsReader::read(Seconds patience) {
  const std::lock_guard lock(mutex_);
  open();
  if (sources_.chips) {
    const auto chips = sources_.chips->read(patience);
    if (!layout_ || !layout_->fits(chips)) layout_.emplace(chips);
    return layout_->snapshot(chips);
  }
  SensorsSnapshot snapshot;
  auto temperatures = events_ ? events_->read() : std::map<std::string, double>{};
  const bool areEvents = !temperatures.empty();
  if (!areEvents) temperatures = controllerTemperatures();
  add(snapshot, temperatures, areEvents ? eventFigures : controllerFigures);
  if (smc_) snapshot.fans = controllerFans(*smc_);
  return snapshot;
}

} // namespace korvell
