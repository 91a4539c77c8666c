#pragma once
// One cycle of measurement: the only place that knows every subject. Lives on the serial queue
// "Korvell.sampler", which it owns; except for queue(), everything is called there, so that no cycle overlaps
// another. Holds the counters of the previous cycle (inside its members) and when each slower task last ran.
// A failed reading leaves zeros and is tried again in the next cycle.

#include "Base/LocalTime.h"
#include "Base/Queue.h"
#include "Core/DevServers/DevServerScanner.h"
#include "Core/DevServers/ServerStopper.h"
#include "Core/Health/AlertEngine.h"
#include "Core/History/HistoryStore.h"
#include "Core/Loop/Tick.h"
#include "Core/Machine/ProcessSampler.h"
#include "Core/Machine/Quit.h"
#include "Core/Machine/SystemSampler.h"
#include "Core/Startup/StartupScanner.h"
#include "Platform/MachineCounters.h"
#include "Platform/MachineState.h"

#include <memory>
#include <optional>

namespace korvell {

class Sampler {
public:
  static constexpr const char* queueLabel = "Korvell.sampler";

  /// What a cycle asks beside the machine as a whole. The steps of an absent one are skipped; without a
  /// process sampler the snapshots have no applications.
  struct Subjects {
    std::unique_ptr<ProcessSampler> processes;
    std::unique_ptr<DevServerScanner> devServers;
    /// Shared with the application's model, which outlives the sampler. Needs the zone, which says when
    /// today began.
    HistoryStore* history = nullptr;
    TimeZone* zone = nullptr;
    LaunchItems* launchItems = nullptr;
    MachineState* state = nullptr; ///< looked at again as often as the sensors
    std::unique_ptr<AlertEngine> alerts;
    /// The weekly report is sent where there are these two, a history and a zone.
    UserDefaults* defaults = nullptr;
    Notifications* notifications = nullptr;
    /// For stopping processes; the table is the one that the samplers above read.
    ProcessTable* table = nullptr;
    ProcessControl* control = nullptr;
    RunningApplications* applications = nullptr;
  };

  Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine, Subjects subjects);
  Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine)
      : Sampler(std::move(queue), machine, Subjects()) {}
  ~Sampler();

  Queue& queue() { return *queue_; }
  Tick tick();

  /// See ServerStopper; without a table and a control every server is `gone`. The next cycle looks for
  /// servers again.
  void stopServer(ProcessID pid, Date startedAt, ServerStopper::Done done);
  /// Who is to end when an application of the last cycle's is quit; see quitTargets().
  std::vector<QuitTarget> targets(const AppUsage& app, bool force, ProcessID self) const;
  /// See quitProcesses(); without the three above everybody is gone.
  QuitResult quit(const std::vector<QuitTarget>& targets, bool force);
  /// The next cycle scans the startup items, whenever it did last.
  void rescanStartup() { lastStartupScan_ = Date::distantPast(); }

  /// Which thresholds the slower tasks go by.
  void setWatched(bool watched) { isWatched_ = watched; }
  /// The health score of the last report, recorded with the next cycle.
  void setLastScore(int score) { lastScore_ = score; }

private:
  void scanDevServers(Tick& tick);
  void scanStartup(Tick& tick);
  void refreshState(Date now);
  void useSample(Tick& tick);
  void sendWeeklyReport(Date now);
  void readHistory(Tick& tick);

  std::unique_ptr<Queue> queue_;
  SystemSampler system_;
  Subjects subjects_;
  std::optional<ServerStopper> stopper_;
  std::int64_t count_ = 0; ///< cycles completed
  bool isWatched_ = true;
  std::optional<int> lastScore_;
  Date lastState_ = Date::distantPast();
  Date lastDevScan_ = Date::distantPast();
  Date lastStartupScan_ = Date::distantPast();
  std::vector<StartupItem> startupItems_; ///< of the last scan
  Date lastWeeklyCheck_ = Date::distantPast();
  Date lastTotals_ = Date::distantPast();
};

} // namespace korvell
