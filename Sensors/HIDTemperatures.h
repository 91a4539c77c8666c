#pragma once
// Every temperature sensor that a Mac's event system publishes, by name. Which ones is decided once. Whoever
// owns it serialises the calls.

#include "Platform/TemperatureSources.h"

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

class HIDTemperatures {
public:
  explicit HIDTemperatures(std::unique_ptr<TemperatureEvents> events);

  /// Degrees Celsius. Sensors without an event are left out; of several with one name the first counts.
  std::map<std::string, double> read();

private:
  std::unique_ptr<TemperatureEvents> events_;
  std::vector<std::pair<std::string, std::size_t>> sensors_; ///< with their services' places
};

} // namespace korvell
