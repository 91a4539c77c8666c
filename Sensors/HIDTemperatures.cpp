#include "Sensors/HIDTemperatures.h"

#include <cmath>

namespace korvell {

namespace {

/// Says how the others are calibrated: no temperature of any place.
constexpr const char* calibration = "PMU tcal";

} // namespace

HIDTemperatures::HIDTemperatures(std::unique_ptr<TemperatureEvents> events) : events_(std::move(events)) {
  const auto products = events_->products();
  for (std::size_t service = 0; service < products.size(); ++service) {
    const auto& name = products[service];
    if (name && !name->empty() && *name != calibration) sensors_.emplace_back(*name, service);
  }
}

std::map<std::string, double> HIDTemperatures::read() {
  std::map<std::string, double> readings;
  for (const auto& [name, service] : sensors_) {
    if (readings.contains(name)) continue;
    if (const auto celsius = events_->celsius(service); celsius && std::isfinite(*celsius))
      readings.emplace(name, *celsius);
  }
  return readings;
}

} // namespace korvell
