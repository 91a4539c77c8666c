#pragma once
// A machine whose counters the test sets, and that remembers how often its volumes were asked for.

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
  int volumeRequests = 0;

  /// A small machine that is as it should be: a disk, a link, a battery at half.
  static FakeMachineCounters portable() {
    FakeMachineCounters machine;
    machine.machineFacts = {"Chip", "Chip", 1, 1, 2};
    machine.cpuCounters = {0.5, {{0, {10, 5, 100, 0}}, {1, {20, 5, 90, 0}}}};
    machine.memoryCounters = {1000, MemoryUse{.app = 300, .wired = 100, .cached = 200}};
    machine.diskCounters = {{1, {4096, 8192}}};
    machine.mountedVolumes = {{"Disk", "/", 1000, 400}};
    machine.interfaceCounters = {{"en0", "Wi-Fi", {100, 200}}};
    machine.gpuCounters = {{12, 50}};
    machine.powerReading.battery = BatteryReading{.present = true, .percent = 50, .externalConnected = true};
    return machine;
  }

  MachineFacts facts() override { return machineFacts; }
  CPUCounters cpu() override { return cpuCounters; }
  MemoryCounters memory() override { return memoryCounters; }
  std::map<std::uint64_t, ByteCounters> disks() override { return diskCounters; }
  std::vector<Volume> volumes() override {
    ++volumeRequests;
    return mountedVolumes;
  }
  std::vector<InterfaceCounters> interfaces() override { return interfaceCounters; }
  std::vector<GPUCounters> gpus() override { return gpuCounters; }
  PowerReading power() override { return powerReading; }
};

} // namespace korvell
