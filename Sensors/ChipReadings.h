#pragma once
// Readings with names, made of the chips that Linux drivers publish. A sensor bears its driver's label; where
// labels repeat, chip and label together; without one, the chip's name and a number. Chips of one driver are
// told apart by their devices, else by numbers.

#include "Platform/TemperatureSources.h"
#include "Sensors/SensorsSnapshot.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// How each chip is called: "coretemp"; "nvme nvme0" and "nvme nvme1"; "ipmi 1" and "ipmi 2".
std::vector<std::string> chipNames(const std::vector<SensorChip>& chips);

/// Names, kinds and order of the sensors of some chips: made once, since only the values change from reading
/// to reading.
class ChipLayout {
public:
  explicit ChipLayout(const std::vector<SensorChip>& chips);

  /// Whether these are the same chips with the same sensors.
  bool fits(const std::vector<SensorChip>& chips) const;
  /// Of chips that fit: those sensors that have a value.
  SensorsSnapshot snapshot(const std::vector<SensorChip>& chips) const;

private:
  struct Temperature {
    std::size_t chip = 0, sensor = 0;
    TemperatureReading reading;
    std::optional<int> cpuRank, gpuRank, socRank;
  };
  struct Fan {
    std::size_t chip = 0, fan = 0;
    FanReading reading;
  };

  void addTemperatures(const std::vector<std::string>& names);
  void addFans(const std::vector<std::string>& names);

  std::vector<SensorChip> chips_; ///< with the values of that time
  std::vector<Temperature> temperatures_;
  std::vector<Fan> fans_;
};

SensorsSnapshot chipSnapshot(const std::vector<SensorChip>& chips);

} // namespace korvell
