#pragma once
// A machine that was made up, with a week behind it: a model that is stepped from cycle to cycle, and a
// history that was recorded.

#include "App/HistoryQueries.h"
#include "App/Model.h"
#include "Base/LocalTime.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "UI/Measures/LiveDirections.h"

#include <memory>

namespace korvell {

/// An hour ahead of UTC.
class WinterZone final : public TimeZone {
public:
  int secondsFromGMT(std::int64_t) const override { return 3600; }
};

class SteppedModel final : public Model {
public:
  SteppedModel(const Queue& main, const UserDefaults& defaults) : Model(main, defaults) {}
  /// As a cycle does: the snapshot joins the live series, observers are told.
  void step(const SystemSnapshot& next, bool isFirst = false);
};

class RecordedMachine {
public:
  enum class Past { none, week, unreadable };
  explicit RecordedMachine(Past past);

  /// A quiet afternoon, read five minutes long; no figure is missing.
  void measure();
  /// Delivers what the history was asked.
  void settle() { scheduler.run(); }

  static Date now();
  static SystemSnapshot snapshotAt(Date date);

  ManualScheduler scheduler{now()};
  FakeUserDefaults defaults;
  WinterZone zone;
  TemporaryFolder folder;
  std::unique_ptr<Queue> main = scheduler.makeMainQueue();
  SteppedModel model{*main, defaults};
  LiveDirections directions{model};
  HistoryStore history;
  HistoryQueries queries{*main, history};

private:
  void recordWeek();
};

} // namespace korvell
