#pragma once
// The whole application over a machine of fakes, with time in the test's hand.

#include "App/AppModel.h"
#include "Tests/Core/Loop/LoopFixture.h"
#include "Tests/Fakes/FakeTrash.h"

namespace korvell {

struct AppFixture : LoopFixture {
  struct SwitchedAttention final : Attention {
    bool watched = true;
    bool isWatched() const override { return watched; }
  };

  FakeTrash trash;
  SwitchedAttention attention;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::unique_ptr<AppModel> model;

  /// Its first cycle waits for the test to run something.
  AppFixture() : LoopFixture(*parseRFC3339("2026-03-02T08:50:00Z")) { start(); } // a Monday

  void start(std::unique_ptr<AIUsageStore> aiUsage = nullptr) {
    model.reset();
    auto history = std::make_unique<HistoryStore>(time.factory(), time.clock(), folder.path().string());
    auto sampler = makeSampler(*history);
    model = std::make_unique<AppModel>(
        *main,
        AppModel::Parts{std::move(history), std::move(sampler), std::move(aiUsage),
                        std::make_unique<AlertLog>(time.factory(), time.clock(), folder.path().string())},
        attention,
        AppModel::Seams{state,
                        defaults,
                        notifications,
                        {table, applications, table},
                        launchItems,
                        trash,
                        time.factory()});
  }
};

} // namespace korvell
