#pragma once
// What the sampler measures, as fakes, with time in the test's hand.

#include "Base/ManualQueue.h"
#include "Core/Loop/Sampler.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeTimeZone.h"
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
  TemporaryFolder folder;
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};

  explicit LoopFixture(Date start) : time(start) {}

  Sampler::Subjects subjects() {
    Sampler::Subjects subjects;
    subjects.processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, cores);
    subjects.devServers = std::make_unique<DevServerScanner>(
        table, linuxDevServerTables, "/home/u", [](const std::string&) { return false; }, time.clock());
    subjects.history = &history;
    subjects.zone = &zone;
    subjects.launchItems = &launchItems;
    return subjects;
  }
};

} // namespace korvell
