#pragma once
// One cycle of measurement: the only place that knows every subject. Lives on the serial queue
// "Korvell.sampler", which it owns; except for queue(), everything is called there, so that no cycle overlaps
// another. Holds the counters of the previous cycle (inside its members) and when each slower part last ran.
// A failed reading leaves zeros and is tried again in the next cycle.

#include "Base/LocalTime.h"
#include "Base/Queue.h"
#include "Core/DevServers/DevServerScanner.h"
#include "Core/Health/AlertEngine.h"
#include "Core/History/HistoryStore.h"
#include "Core/Loop/Tick.h"
#include "Core/Machine/ProcessSampler.h"
#include "Core/Machine/SystemSampler.h"
#include "Core/Startup/StartupScanner.h"
#include "Platform/MachineCounters.h"
#include "Platform/MachineState.h"
#include "Platform/PeripheralSource.h"
#include "Sensors/SensorsReader.h"

#include <array>
#include <memory>
#include <optional>
#include <span>

namespace korvell {

/// The parts of a cycle that have clocks of their own; Sampler.cpp has their table.
enum class SlowPart { machineState, sensors, devServers, peripherals, startupItems, weeklyReport, totals };

class Sampler {
public:
  static constexpr const char* queueLabel = "Korvell.sampler";

  /// What a cycle asks beside the machine as a whole.
  struct Subjects {
    std::unique_ptr<ProcessSampler> processes;
    std::unique_ptr<DevServerScanner> devServers;
    LaunchItems& launchItems;
    MachineState& state;
    std::unique_ptr<SensorsReader> sensors;
    PeripheralSource& peripherals;
  };
  /// What becomes of a sample in the process that keeps. Everything outlives the sampler.
  struct Keeping {
    HistoryStore& history;
    TimeZone& zone; ///< says when today began
    std::unique_ptr<AlertEngine> alerts;
    UserDefaults& defaults;
    Notifications& notifications; ///< get the weekly report
  };

  /// Without `keeping` a sample is handed on and forgotten.
  Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine, Subjects subjects,
          std::optional<Keeping> keeping = std::nullopt);
  ~Sampler();

  Queue& queue() { return *queue_; }
  Tick tick();

  /// The next cycle runs that part, whenever it did last.
  void runSoon(SlowPart part) { lastRun_[std::size_t(part)] = Date::distantPast(); }
  /// Which intervals the slow parts go by.
  void setWatched(bool watched) { isWatched_ = watched; }
  /// The health score of the last report, recorded with the next cycle.
  void setLastScore(int score) { lastScore_ = score; }
  /// As the last cycle left it.
  const ProcessSampler& processes() const { return *subjects_.processes; }

private:
  struct SlowTask;
  static const SlowTask measuringTasks[], keepingTasks[];

  void runDue(std::span<const SlowTask> tasks, Tick& tick);
  void refreshState(Tick& tick);
  void readSensors(Tick& tick);
  void scanDevServers(Tick& tick);
  void readPeripherals(Tick& tick);
  void scanStartup(Tick& tick);
  void keep(Tick& tick);
  void sendWeeklyReport(Tick& tick);
  void sumTotals(Tick& tick);

  std::unique_ptr<Queue> queue_;
  SystemSampler system_;
  Subjects subjects_;
  std::optional<Keeping> keeping_;
  std::int64_t count_ = 0; ///< cycles completed
  bool isWatched_ = true;
  std::optional<int> lastScore_;
  std::vector<StartupItem> startupItems_; ///< of the last scan
  std::array<Date, std::size_t(SlowPart::totals) + 1> lastRun_;
};

} // namespace korvell
