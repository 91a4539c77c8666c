#pragma once
// What the sampler measures, as fakes, with time in the test's hand.

#include "Base/ManualQueue.h"
#include "Core/Loop/Sampler.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeMachineState.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeSensors.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/OneEach.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

struct LoopFixture : testing::Test {
  static constexpr int cores = 4;

  ManualScheduler time;
  FakeMachineCounters machine;
  FakeProcessTable table;
  FakeRunningApplications applications;
  OneEach owners;
  FakeTimeZone zone;
  FakeLaunchItems launchItems;
  FakeMachineState state;
  FakeSensorChips* const chips = new FakeSensorChips; ///< owned by the sources
  TemperatureSources temperatures{.chips = std::unique_ptr<SensorChips>(chips)};
  FakePeripherals peripherals;
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  TemporaryFolder folder;

  explicit LoopFixture(Date start) : time(start) {}

  /// One that keeps, in that history.
  std::unique_ptr<Sampler> makeSampler(HistoryStore& history) {
    auto processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, cores);
    auto devServers = std::make_unique<DevServerScanner>(
        table, linuxDevServerTables, "/home/u", [](const std::string&) { return false; },
        [](const std::string&) { return false; }, time.clock());
    auto alerts = std::make_unique<AlertEngine>(AlertEngine::Services{defaults, notifications},
                                                std::string(linuxSystemGroup.key), cores);
    return std::make_unique<Sampler>(
        time.makeQueue(Sampler::queueLabel), machine,
        Sampler::Subjects{std::move(processes), std::move(devServers), launchItems, state,
                          std::make_unique<SensorsReader>(temperatures), peripherals},
        Sampler::Keeping{history, zone, std::move(alerts), defaults, notifications});
  }
};

} // namespace korvell
