#pragma once
// Batteries of mice, keyboards, headphones and other things that the machine itself is not powered by.
// Sensors/Peripherals.h makes a list for people of what the sources tell.

#include <optional>
#include <string>
#include <vector>

namespace korvell {

enum class PeripheralType { unknown, mouse, keyboard, trackpad, headphones };

struct PeripheralReading {
  std::string name; ///< as the system or the maker calls it; may be empty and may hold any bytes
  std::optional<double> percent;
  PeripheralType type = PeripheralType::unknown;
  std::string address;   ///< of its radio or its serial number; empty when unknown
  std::string node;      ///< the system's name of the battery; empty when unknown
  bool isPresent = true; ///< false: an entry that stayed when the device was switched off or went away
  bool operator==(const PeripheralReading&) const = default;
};

class PeripheralSource {
public:
  virtual ~PeripheralSource() = default;
  /// What each service tells, the most trusted first; the same device may stand there several times. Takes
  /// milliseconds, and a fraction of a second when a service does not answer. One thread at a time.
  virtual std::vector<PeripheralReading> read() = 0;
};

class NoPeripherals final : public PeripheralSource {
public:
  std::vector<PeripheralReading> read() override { return {}; }
};

} // namespace korvell
