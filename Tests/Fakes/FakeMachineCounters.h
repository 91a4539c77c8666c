#pragma once
// A machine whose counters the test sets.

#include "Platform/MachineCounters.h"

namespace korvell {

class FakeMachineCounters final : public MachineCounters {
public:
  MachineFacts machineFacts;
  CPUCounters cpuCounters;
  MemoryCounters memoryCounters;
  std::map<std::uint64_t, ByteCounters> diskCounters;
  std::vector<Volume> mountedVolumes;
  std::vector<InterfaceCounters> interfaceCounters;
  std::vector<GPUCounters> gpuCounters;
  PowerReading powerReading;

  MachineFacts facts() override { return machineFacts; }
  CPUCounters cpu() override { return cpuCounters; }
  MemoryCounters memory() override { return memoryCounters; }
  std::map<std::uint64_t, ByteCounters> disks() override { return diskCounters; }
  std::vector<Volume> volumes() override { return mountedVolumes; }
  std::vector<InterfaceCounters> interfaces() override { return interfaceCounters; }
  std::vector<GPUCounters> gpus() override { return gpuCounters; }
  PowerReading power() override { return powerReading; }
};

} // namespace korvell
