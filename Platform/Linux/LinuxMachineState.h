#pragma once
// Temperature and uptime from sysfs and procfs. What there is to read (zones, trip points, cooling devices,
// packages) is looked for at the first refresh() and every minute, because trip points and processors change.

#include "Platform/Formats/LinuxThermal.h"
#include "Platform/Linux/FileReader.h"
#include "Platform/MachineState.h"

#include <atomic>
#include <string>
#include <vector>

namespace korvell {

class LinuxMachineState final : public MachineState {
public:
  explicit LinuxMachineState(const Clock& clock, std::string proc = "/proc", std::string sys = "/sys");

  void refresh() override;
  ThermalState thermalState() const override { return thermal_; }
  Seconds uptime() const override { return Seconds{uptime_}; }

private:
  struct Zone {
    std::string file;
    std::vector<ThermalTrip> trips;
  };
  struct Package {
    int number = 0;
    std::string file;
  };

  void find();
  void findZones();
  void findPackages();
  ThermalReading read();

  const Clock& clock_;
  const std::string proc_;
  const std::string sys_;
  FileReader reader_;
  std::vector<Zone> zones_;
  std::vector<std::string> coolers_; ///< files with the state of what slows processors
  std::vector<Package> packages_;
  ThrottledTime throttled_; ///< of the last refresh()
  std::optional<Seconds> refreshed_;
  std::optional<Seconds> found_;
  std::atomic<ThermalState> thermal_ = ThermalState::nominal;
  std::atomic<double> uptime_ = 0;
};

} // namespace korvell
