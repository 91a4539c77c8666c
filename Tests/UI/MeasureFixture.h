#pragma once
// A machine whose figures a test sets, with a history, and the measures' pages over it.

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "UI/Measures/MeasureSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {

struct StillModel final : Model {
  StillModel(const Queue& main, const UserDefaults& defaults) : Model(main, defaults) {
    KnownParts all;
    for (const auto& part : allCases<KnownPart>()) all.set(part.value, true);
    known.set(all);
  }
  void step(const SystemSnapshot& next) {
    Publication publication;
    publication.set(snapshot, next);
    publication.set(hasSample, true);
    extendLiveSeries(publication);
    publication.set(cycle, *cycle + 1);
  }
  void forget(KnownPart part) {
    auto parts = *known;
    parts.set(part, false);
    known.set(parts);
  }
};

struct MeasureFixture : testing::Test {
  const Date start = *parseRFC3339("2026-03-02T08:00:00Z");
  ManualScheduler scheduler{start};
  FakeUserDefaults defaults;
  FakeTimeZone zone;
  TemporaryFolder folder;
  std::unique_ptr<Queue> main = scheduler.makeMainQueue();
  StillModel model{*main, defaults};
  LiveDirections directions{model};
  HistoryStore history{scheduler.factory(), scheduler.clock(), folder.path().string()};
  HistoryQueries queries{*main, history};
  int changes = 0;

  static AppUsage app(const std::string& id, std::vector<double> cpu) {
    AppUsage usage{.id = id, .name = id, .bundlePath = {}, .mainPID = {}, .processes = {}};
    for (std::size_t i = 0; i < cpu.size(); ++i)
      usage.processes.push_back({.pid = int(100 + i), .name = id, .cpu = cpu[i], .memory = 1 << 20});
    return usage;
  }
  SystemSnapshot snapshot(Date date, double cpu, std::vector<AppUsage> apps = {}) {
    auto made = SystemSnapshot::empty(date);
    made.cpu = {.total = cpu, .user = cpu, .perCore = {cpu, cpu}};
    made.memory = {.total = 16ull << 30,
                   .app = 4ull << 30,
                   .wired = 1ull << 30,
                   .cached = 3ull << 30,
                   .free = 8ull << 30};
    made.disk.readRate = cpu * 1e4;
    made.disk.writeRate = cpu * 1e3;
    made.apps = std::move(apps);
    return made;
  }
  /// Records minutes; the clock stands behind the last one.
  void record(int from, int to, double cpu, std::vector<AppUsage> apps) {
    for (int minute = from; minute <= to; ++minute) {
      const Date date = start + Seconds{minute * 60.0};
      scheduler.clock().setNow(date);
      history.record(snapshot(date, cpu, apps), std::nullopt);
    }
    scheduler.run();
  }
  std::unique_ptr<MeasureSession> open(Metric metric, HistoryRange range = HistoryRange::live) {
    return std::make_unique<MeasureSession>(
        MeasureSession::Services{model, queries, directions, zone, defaults, {"TCP only."}}, metric, range,
        [this] { ++changes; });
  }
  MeasurePage page(Metric metric) { return measurePage(model, metric, {}); }
};

inline std::vector<std::string> names(const AppList& list) {
  std::vector<std::string> result;
  for (const auto& row : list.table.rows) result.push_back(row.name);
  return result;
}

} // namespace korvell
