#pragma once
// Machines that never were, for the gallery and the tests of what views show: the values that a model
// publishes, set by hand. Without the toolkit. Their clock stands at 15:42:08 UTC on a Sunday.

#include "App/Model.h"
#include "Base/LocalTime.h"
#include "Base/ManualQueue.h"

#include <memory>
#include <string>
#include <string_view>

namespace korvell {

/// Clocks that show UTC.
class MadeUpZone final : public TimeZone {
public:
  int secondsFromGMT(std::int64_t) const override { return 0; }
};

/// Nothing is stored: every setting has its default.
class MadeUpDefaults final : public UserDefaults {
public:
  std::optional<Value> value(std::string_view) const override { return std::nullopt; }
  bool update(std::string_view, const std::function<std::optional<Value>(std::optional<Value>)>&) override {
    return false;
  }
  std::string place() const override { return "nowhere"; }
};

struct MadeUpWorld {
  MadeUpDefaults defaults;
  MadeUpZone zone;
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();

  explicit MadeUpWorld(Date now) : time(now) {}
};

/// Waits for its second sample, with nothing known, until one of the functions below fills it.
class MadeUpModel final : private MadeUpWorld, public Model {
public:
  MadeUpModel();
  Date now() const { return snapshot->date; }
  using MadeUpWorld::defaults;
  using MadeUpWorld::zone;

  template <class T, class Change>
  void change(Published<T>& published, Change with) {
    T value = *published;
    with(value);
    published.set(std::move(value));
  }
  void know(KnownPart part, Knowledge state);
  void alert(HealthAlert::Kind kind, std::string title, Seconds ago);
};

/// An application with that many processes, whose sums are the figures given.
struct MadeUpApp {
  std::string_view name;
  int processes = 1;
  double cpu = 0;     ///< percent of one core
  double memory = 0;  ///< binary megabytes
  double disk = 0;    ///< bytes a second
  double network = 0; ///< bytes a second
};
AppUsage madeUp(const MadeUpApp& app);

Insight madeUpInsight(Insight::Severity severity, int penalty, std::string title, std::string detail,
                      std::optional<Insight::Action> action = {});
/// The report of these findings, the score what they leave of 100.
HealthReport madeUpReport(std::vector<Insight> insights);

using MadeUp = std::unique_ptr<MadeUpModel>;
/// A laptop with a disk that fills up: the machine of the design's pictures.
MadeUp usualMachine();
/// Before the second sample.
MadeUp startingMachine();
/// Nothing to mend.
MadeUp healthyMachine();
/// Six findings that cost more than there is, a memory that is gone.
MadeUp troubledMachine();
/// Long names, large figures.
MadeUp wordyMachine();
/// A virtual machine: no battery, no graphics, little that can be read.
MadeUp bareMachine();

} // namespace korvell
