#pragma once
// Batteries of peripherals on Linux: UPower's, which knows most of them, BlueZ's by address beside it, and,
// where no UPower runs, what drivers publish in the power-supply class. Services that don't run are not
// started.

#include "Base/Date.h"
#include "Platform/Linux/FileReader.h"
#include "Platform/PeripheralSource.h"

#include <string>
#include <vector>

namespace korvell {

struct PeripheralAnswer {
  std::vector<PeripheralReading> readings;
  std::string silence; ///< why there is no answer, a sentence, localised; empty when there is one
};

/// `busAddress`: of the system's bus. Blocks for at most `patience`; from any thread.
PeripheralAnswer askUPower(const std::string& busAddress, Seconds patience);
/// Only of devices that are connected.
PeripheralAnswer askBlueZ(const std::string& busAddress, Seconds patience);
/// Entries that power only a device.
std::vector<PeripheralReading> deviceSupplies(const std::string& sys, FileReader& reader);

class LinuxPeripherals final : public PeripheralSource {
public:
  /// For each of the two services; what answers at all answers in milliseconds.
  static constexpr Seconds patience{0.25};

  explicit LinuxPeripherals(std::string busAddress, std::string sys = "/sys", Seconds wait = patience)
      : bus_(std::move(busAddress)), sys_(std::move(sys)), patience_(wait) {}

  std::vector<PeripheralReading> read() override;

private:
  const std::string bus_, sys_;
  const Seconds patience_;
  FileReader reader_;
};

} // namespace korvell
