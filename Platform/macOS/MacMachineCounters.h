#pragma once
// The machine's counters on macOS: Mach statistics, sysctl values, the interface list, and what drivers
// publish in the I/O registry. Needs no privileges.

#include "Platform/MachineCounters.h"

#include <mach/mach.h>

#include <map>
#include <string>

namespace korvell {

class MacMachineCounters final : public MachineCounters {
public:
  MacMachineCounters();
  ~MacMachineCounters() override;
  MacMachineCounters(const MacMachineCounters&) = delete;
  MacMachineCounters& operator=(const MacMachineCounters&) = delete;

  std::optional<double> loadAverage() override;
  std::optional<CPUCounters> cpu() override;
  std::optional<MemoryCounters> memory() override;
  PressureLevel pressure() override;
  std::map<std::uint64_t, ByteCounters> disks() override;
  std::vector<Volume> volumes() override;
  std::vector<InterfaceCounters> interfaces() override;
  std::vector<GPUCounters> gpus() override;
  std::optional<BatteryReading> battery() override;
  std::optional<double> mainsWatts() override;

  std::string chipName() override { return chip_; }
  int performanceCores() override { return performanceCores_; }
  int efficiencyCores() override { return efficiencyCores_; }
  int logicalProcessors() override { return logicalProcessors_; }

private:
  mach_port_t host_; ///< one port reference for the object's life: each mach_host_self() adds one
  std::string chip_;
  int performanceCores_;
  int efficiencyCores_;
  int logicalProcessors_;
  std::map<std::string, std::string> displayNames_; ///< by interface name
};

} // namespace korvell
