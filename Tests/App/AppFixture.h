#pragma once
// The whole application over a machine of fakes, with time in the test's hand.

#include "App/AppModel.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeLaunchItems.h"
#include "Tests/Fakes/FakeMachineCounters.h"
#include "Tests/Fakes/FakeMachineState.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeProcessTable.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeTrash.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/OneEach.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

struct AppFixture : testing::Test {
  struct SwitchedAttention final : Attention {
    bool watched = true;
    bool isWatched() const override { return watched; }
  };
  static constexpr int cores = 4;

  ManualScheduler time{*parseRFC3339("2026-03-02T08:50:00Z")}; // a Monday
  FakeMachineCounters machine;
  FakeProcessTable table;
  FakeRunningApplications applications;
  OneEach owners;
  FakeTimeZone zone;
  FakeLaunchItems launchItems;
  FakeTrash trash;
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  FakeMachineState state;
  SwitchedAttention attention;
  TemporaryFolder folder;
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};
  std::unique_ptr<Queue> main = time.makeQueue("main");
  std::unique_ptr<AppModel> model;

  /// Its first cycle waits for the test to run something.
  AppFixture() { start(); }

  void start(std::unique_ptr<AIUsageStore> aiUsage = nullptr) {
    model = std::make_unique<AppModel>(
        *main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine, subjects()), attention,
        AppModel::Seams{&state, &defaults, &notifications, &launchItems, &trash, time.factory()},
        std::move(aiUsage));
  }
  Sampler::Subjects subjects() {
    Sampler::Subjects subjects;
    subjects.processes = std::make_unique<ProcessSampler>(
        ProcessSampler::Services{table, applications, owners, time.clock()}, cores);
    subjects.devServers = std::make_unique<DevServerScanner>(
        table, linuxDevServerTables, "/home/u", [](const std::string&) { return false; }, time.clock());
    subjects.history = &history;
    subjects.zone = &zone;
    subjects.launchItems = &launchItems;
    subjects.state = &state;
    subjects.alerts = std::make_unique<AlertEngine>(AlertEngine::Services{defaults, notifications},
                                                    std::string(linuxSystemGroup.key), cores);
    subjects.defaults = &defaults;
    subjects.notifications = &notifications;
    subjects.table = &table;
    subjects.control = &table;
    subjects.applications = &applications;
    return subjects;
  }
};

} // namespace korvell
