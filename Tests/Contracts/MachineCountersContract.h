#pragma once
// What every implementation of MachineCounters owes, whatever the machine: run against the fake, the trees of
// other machines and the machine at hand.

#include "Platform/MachineCounters.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace korvell {

inline void expectSaneCPU(const CPUCounters& before, const CPUCounters& after) {
  ASSERT_FALSE(before.cores.empty());
  EXPECT_GE(before.load1.value_or(-1), 0);
  EXPECT_EQ(before.width, after.width);
  for (const auto& [number, ticks] : after.cores) {
    EXPECT_GE(number, 0);
    const auto old = before.cores.find(number);
    if (old == before.cores.end() || after.width == TickWidth::wraps32) continue;
    EXPECT_GE(ticks.user, old->second.user) << "core " << number;
    EXPECT_GE(ticks.system, old->second.system) << "core " << number;
  }
}

inline void expectSaneMemory(const MemoryCounters& memory) {
  ASSERT_TRUE(memory.use);
  const auto& use = *memory.use;
  EXPECT_GT(memory.total, 0u);
  EXPECT_LE(use.app + use.wired + use.compressed + use.cached, memory.total);
}

inline void expectSaneVolumes(const std::vector<Volume>& volumes) {
  ASSERT_FALSE(volumes.empty());
  EXPECT_EQ(volumes.front().mountPoint, "/");
  std::set<std::string> places;
  for (const auto& volume : volumes) {
    EXPECT_TRUE(places.insert(volume.mountPoint).second) << volume.mountPoint;
    EXPECT_GE(volume.available, 0);
    EXPECT_LE(volume.available, volume.total) << volume.mountPoint;
  }
}

inline void expectMachineContract(MachineCounters& machine) {
  const auto facts = machine.facts();
  EXPECT_GE(facts.logicalProcessors, 1);
  EXPECT_EQ(facts.performanceCores == 0, facts.efficiencyCores == 0);
  EXPECT_LE(facts.performanceCores + facts.efficiencyCores, facts.logicalProcessors);
  const auto before = machine.cpu();
  expectSaneMemory(machine.memory());
  expectSaneVolumes(machine.volumes());
  std::set<std::string> names;
  for (const auto& interface : machine.interfaces()) {
    EXPECT_FALSE(interface.name.empty());
    EXPECT_TRUE(names.insert(interface.name).second) << interface.name;
  }
  for (const auto& gpu : machine.gpus()) {
    EXPECT_GE(gpu.utilization, 0);
    EXPECT_LE(gpu.utilization, 100);
  }
  const auto power = machine.power();
  if (power.battery && power.battery->percent) {
    EXPECT_GE(*power.battery->percent, 0);
    EXPECT_LE(*power.battery->percent, 100);
  }
  for (const auto& [package, counter] : power.packages)
    EXPECT_TRUE(!counter.wrapsAt || counter.microjoules <= counter.wrapsAt) << package;
  expectSaneCPU(before, machine.cpu());
}

} // namespace korvell
