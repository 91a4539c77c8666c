#pragma once
// The whole application over a machine of fakes, with time in the test's hand.

#include "App/AppModel.h"
#include "Tests/Core/Loop/LoopFixture.h"
#include "Tests/Fakes/FakeMachineState.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeTrash.h"
#include "Tests/Fakes/FakeUserDefaults.h"

namespace korvell {

struct AppFixture : LoopFixture {
  struct SwitchedAttention final : Attention {
    bool watched = true;
    bool isWatched() const override { return watched; }
  };

  FakeTrash trash;
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  FakeMachineState state;
  SwitchedAttention attention;
  std::unique_ptr<Queue> main = time.makeQueue("main");
  std::unique_ptr<AppModel> model;

  /// Its first cycle waits for the test to run something.
  AppFixture() : LoopFixture(*parseRFC3339("2026-03-02T08:50:00Z")) { start(); } // a Monday

  void start(std::unique_ptr<AIUsageStore> aiUsage = nullptr) {
    model = std::make_unique<AppModel>(
        *main, std::make_unique<Sampler>(time.makeQueue(Sampler::queueLabel), machine, subjects()), attention,
        AppModel::Seams{&state, &defaults, &notifications, &launchItems, &trash, time.factory()},
        std::move(aiUsage));
  }
  Sampler::Subjects subjects() {
    auto subjects = LoopFixture::subjects();
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
