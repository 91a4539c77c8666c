#pragma once
// All temperatures and fans of the machine as one snapshot. Opens its sources at the first reading; one that
// can't be opened is not tried again. From any thread: one lock serialises all calls, the readers below it
// have none. An empty snapshot means that nothing can be read here.

#include "Platform/TemperatureSources.h"
#include "Sensors/ChipReadings.h"
#include "Sensors/HIDTemperatures.h"
#include "Sensors/SMC.h"
#include "Sensors/SensorsSnapshot.h"

#include <map>
#include <mutex>
#include <optional>

namespace korvell {

class SensorsReader {
public:
  /// The sources outlive it.
  explicit SensorsReader(TemperatureSources& sources) : sources_(sources) {}

  /// `patience`: for sensors that answer slowly, when they are read for the first time.
  SensorsSnapshot read(Seconds patience = Seconds(0.02));

private:
  void open();
  std::map<std::string, double> controllerTemperatures();

  std::mutex mutex_;
  TemperatureSources& sources_;
  bool isOpen_ = false;
  std::optional<SMC> smc_;
  std::optional<HIDTemperatures> events_;
  std::optional<ChipLayout> layout_; ///< of the last reading's chips
};

} // namespace korvell
