#pragma once
// Chips and peripherals as a test puts them there.

#include "Platform/PeripheralSource.h"
#include "Platform/TemperatureSources.h"

namespace korvell {

class FakeSensorChips final : public SensorChips {
public:
  std::vector<SensorChip> chips;
  std::vector<SensorChip> read(Seconds) override { return chips; }
};

class FakePeripherals final : public PeripheralSource {
public:
  std::vector<PeripheralReading> devices;
  std::vector<PeripheralReading> read() override { return devices; }
};

} // namespace korvell
