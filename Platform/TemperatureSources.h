#pragma once
// Where temperatures and fan speeds come from. A machine has some of these: Macs a controller and a client of
// the system's sensor events, Linux the chips that its drivers publish. Sensors/SensorsReader.h makes
// readings with names of them.
//
// One thread at a time. A reading that fails is absent, and is tried again at the next call.

#include "Base/Date.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// Above 0 and at most 150 °C: sensors that are switched off or not connected say the rest.
constexpr bool isTemperature(double celsius) { return celsius > 0 && celsius <= 150; }

/// The System Management Controller of a Mac, asked with records that are sent and received whole.
class ControllerTransport {
public:
  static constexpr std::size_t recordSize = 80;
  using Record = std::array<std::uint8_t, recordSize>;

  virtual ~ControllerTransport() = default;
  /// How many bytes of the reply came back; nothing when the call failed.
  virtual std::optional<std::size_t> exchange(const Record& request, Record& reply) = 0;
};

/// The services of the system's sensor events that measure temperatures.
class TemperatureEvents {
public:
  virtual ~TemperatureEvents() = default;
  /// What each service calls its product; absent for those that don't say. Always the same.
  virtual std::vector<std::optional<std::string>> products() = 0;
  /// Degrees Celsius of a service, by its place among the products; absent without an event.
  virtual std::optional<double> celsius(std::size_t service) = 0;
};

struct ChipTemperature {
  int number = 0;                ///< the driver's, from 1 on
  std::string label;             ///< the driver's own; empty without one. May hold any bytes
  std::optional<double> celsius; ///< absent when it can't be read, is flagged faulty or says what can't be
  bool operator==(const ChipTemperature&) const = default;
};

struct ChipFan {
  int number = 0;
  std::string label;
  std::optional<double> rpm; ///< 0: it stands still, or nothing is connected
  std::optional<double> minRPM;
  std::optional<double> maxRPM;
  bool operator==(const ChipFan&) const = default;
};

struct SensorChip {
  std::string driver; ///< "coretemp", "nvme"
  std::string device; ///< which of several, "nvme0", "0000:03:00.0"; empty when the system does not say
  std::vector<ChipTemperature> temperatures;
  std::vector<ChipFan> fans;
  bool operator==(const SensorChip&) const = default;
};

class SensorChips {
public:
  virtual ~SensorChips() = default;
  /// Every chip in the system's order. Chips that answer slowly are read on the side and told with the values
  /// of their last reading; for those of which nothing is known yet it waits, `patience` at most for all of
  /// them. The others take at most some milliseconds. What sleeps is left asleep and has no values.
  virtual std::vector<SensorChip> read(Seconds patience) = 0;
};

struct TemperatureSources {
  /// Null where there is no such thing; each may also answer with null.
  std::function<std::unique_ptr<ControllerTransport>()> openController;
  std::function<std::unique_ptr<TemperatureEvents>()> openEvents;
  std::unique_ptr<SensorChips> chips;
};

} // namespace korvell
