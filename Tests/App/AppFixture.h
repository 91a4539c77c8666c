#pragma once
// The whole application over a machine of fakes, with time in the test's hand.

#include "App/ModelActions.h"
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
  std::unique_ptr<Queue> slow = time.makeQueue("Korvell.storage");
  std::map<StorageKind, std::int64_t> disk; ///< bytes that can be freed of a kind, an item each
  std::unique_ptr<StorageScanner> storage;
  std::unique_ptr<ModelActions> actions;

  /// Its first cycle waits for the test to run something.
  AppFixture() : LoopFixture(*parseRFC3339("2026-03-02T08:50:00Z")) { start(); } // a Monday

  void start(std::unique_ptr<AIUsageStore> aiUsage = nullptr) {
    actions.reset();
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
    storage = std::make_unique<StorageScanner>(storageWork(), defaults, *main, *slow);
    actions = std::make_unique<ModelActions>(
        *main,
        ModelActions::Parts{[this]() -> AppModel& { return *model; },
                            [this]() -> StorageScanner& { return *storage; }, defaults, time.factory()});
  }

private:
  StorageWork storageWork() {
    using Items = std::vector<StorageItem>;
    return {.measure = [this](StorageKind kind, const Cancellation&) -> std::optional<StorageCategory> {
              const auto size = disk.find(kind);
              if (size == disk.end()) return std::nullopt;
              const auto path = "/home/u/" + std::string(rawValue(kind));
              return category(kind, {{.id = path, .kind = kind, .bytes = size->second, .urls = {path}}});
            },
            .perform =
                [this](const StorageAction&, const Items& items, const Cancellation&) {
                  ActionReport report;
                  for (const auto& item : items)
                    if (disk.erase(item.kind) > 0) report.done[item.kind] = {1, item.bytes};
                  return report;
                },
            .preview =
                [](const StorageAction&, const Items& items) {
                  std::vector<std::string> steps;
                  for (const auto& item : items) steps.push_back("move " + item.id);
                  return steps;
                },
            .home = [] { return std::string("/home/u"); }};
  }
};

} // namespace korvell
