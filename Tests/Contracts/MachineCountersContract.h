#pragma once
// What every implementation of MachineCounters owes, whatever the machine: run against the trees of other
// machines and the machine at hand.

#include "Platform/MachineCounters.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>

namespace korvell {

inline void expectMachineContract(MachineCounters& machine) {
  const auto facts = machine.facts();
  EXPECT_GE(facts.logicalProcessors, 1);
  EXPECT_EQ(facts.performanceCores == 0, facts.efficiencyCores == 0);
  EXPECT_LE(facts.performanceCores + facts.efficiencyCores, facts.logicalProcessors);

  const auto before = machine.cpu(), after = machine.cpu();
  ASSERT_FALSE(before.cores.empty());
  EXPECT_GE(before.load1.value_or(-1), 0);
  EXPECT_EQ(before.width, after.width);
  for (const auto& [number, ticks] : after.cores) {
    const auto old = before.cores.find(number);
    if (old == before.cores.end() || after.width == TickWidth::wraps32) continue;
    EXPECT_GE(ticks.user, old->second.user) << "core " << number;
    EXPECT_GE(ticks.system, old->second.system) << "core " << number;
  }

  const auto memory = machine.memory();
  const auto use = memory.use.value();
  EXPECT_GT(memory.total, 0u);
  EXPECT_LE(use.app + use.wired + use.compressed + use.cached, memory.total);

  std::set<std::string> places, names;
  for (const auto& volume : machine.volumes()) {
    EXPECT_EQ(volume.mountPoint == "/", places.empty()) << "the root is first";
    EXPECT_TRUE(places.insert(volume.mountPoint).second) << volume.mountPoint;
    EXPECT_GE(volume.available, 0) << volume.mountPoint;
    EXPECT_LE(volume.available, volume.total) << volume.mountPoint;
  }
  EXPECT_FALSE(places.empty());
  for (const auto& interface : machine.interfaces())
    EXPECT_TRUE(!interface.name.empty() && names.insert(interface.name).second) << interface.name;

  const auto isPercentage = [](double value) { return value >= 0 && value <= 100; };
  for (const auto& gpu : machine.gpus())
    EXPECT_TRUE(isPercentage(gpu.utilization.value_or(0))) << *gpu.utilization;
  const auto power = machine.power();
  EXPECT_TRUE(!power.battery || isPercentage(power.battery->percent.value_or(0)));
  for (const auto& [package, counter] : power.packages)
    EXPECT_TRUE(!counter.wrapsAt || counter.microjoules <= counter.wrapsAt) << package;
}

} // namespace korvell
