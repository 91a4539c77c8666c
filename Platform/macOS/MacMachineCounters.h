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

  MachineFacts facts() override { return facts_; }
  CPUCounters cpu() override;
  MemoryCounters memory() override;
  std::map<std::uint64_t, ByteCounters> disks() override;
  std::vector<Volume> volumes() override;
  std::vector<InterfaceCounters> interfaces() override;
  std::vector<GPUCounters> gpus() override;
  PowerReading power() override;

private:
  mach_port_t host_; ///< one port reference for the object's life: each mach_host_self() adds one
  MachineFacts facts_;
  std::map<std::string, std::string> displayNames_; ///< by interface name
};

} // namespace korvell
