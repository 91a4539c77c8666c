#pragma once
// The one observable model of a running Korvell: it drives the sampler and publishes what each cycle found.
//
// Main thread only (the queue `main` that it is given). It never waits for the sampler: results come by an
// asynchronous hand-off to the main queue. Sampling starts with the construction and ends with the
// destruction, which waits for a cycle in progress and drops its result. The AI usage is scanned on the
// store's own timer meanwhile; its plan-limit alerts join the others.

#include "App/MenuBarState.h"
#include "Base/Published.h"
#include "Base/Queue.h"
#include "Core/AIUsage/AIUsageStore.h"
#include "Core/Health/HealthReport.h"
#include "Core/Loop/Pace.h"
#include "Core/Loop/Sampler.h"
#include "Platform/Attention.h"
#include "Platform/Trash.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace korvell {

using LiveSeries = std::map<Metric, std::vector<HistoryPoint>>;

class AppModel {
public:
  /// How far back the live series reach.
  static constexpr Seconds liveSpan{300};
  static constexpr size_t mostAlerts = 100;

  /// What the model asks beside the sampler. Without the machine's state there is no report.
  struct Seams {
    const MachineState* state = nullptr;
    const UserDefaults* defaults = nullptr; ///< the menu bar's style; the icon without
    Notifications* notifications = nullptr; ///< asked for permission once
    // For removing startup items, on a queue that is made when it is first needed.
    LaunchItems* launchItems = nullptr;
    Trash* trash = nullptr;
    QueueFactory makeQueue = {};
  };

  /// Without `aiUsage` there is no accounting of AI usage.
  AppModel(Queue& main, std::unique_ptr<Sampler> sampler, const Attention& attention, Seams seams,
           std::unique_ptr<AIUsageStore> aiUsage = nullptr);
  AppModel(Queue& main, std::unique_ptr<Sampler> sampler, const Attention& attention)
      : AppModel(main, std::move(sampler), attention, Seams()) {}
  ~AppModel();
  AppModel(const AppModel&) = delete;
  AppModel& operator=(const AppModel&) = delete;

  // The results of the slower tasks change only in cycles that ran them.
  Published<SystemSnapshot> snapshot;
  Published<std::optional<PrivilegedUse>> privileged; ///< of the snapshot's processes
  Published<std::optional<SensorsSnapshot>> sensors;
  Published<std::vector<PeripheralBattery>> peripherals;
  Published<std::vector<DevProject>> projects;
  Published<std::vector<StartupItem>> startupItems;
  Published<std::vector<HealthAlert>> alerts; ///< newest first, at most mostAlerts
  Published<HealthReport> report;             ///< says something once hasSample is true
  Published<LiveSeries> live;                 ///< one series a metric over the last liveSpan
  Published<Totals> totals;
  Published<std::optional<SidebarItem>> selection; ///< the section shown in the main window
  Published<bool> hasSample;                       ///< false until the second tick: the first has no rates

  MenuBarState menuBar;

  // The user's actions. `done` is called once, on the main queue, unless the model ends before; by then the
  // lists above show what has changed, but for applications, which take their time to quit.

  /// Stops a development server, politely and after three seconds for good.
  void stop(const DevServer& server, std::function<void(StopOutcome)> done);
  /// Asks an application of the snapshot to quit, or ends it at once; never this process.
  void quit(const AppUsage& app, bool force, std::function<void(QuitResult)> done);
  void quit(const std::string& bundlePath, std::function<void(QuitResult)> done);
  /// The same of processes that somebody else saw.
  void quit(std::vector<QuitTarget> targets, bool force, std::function<void(QuitResult)> done);
  void rescanStartupItems(Task done);
  /// Stops a leftover's job and moves its file to the Trash.
  void remove(const StartupItem& item, std::function<void(Outcome)> done);

  /// The user has just opened something: the fast pace, at once.
  void wake();
  Sampler& sampler() { return *sampler_; }
  AIUsageStore* aiUsage() { return aiUsage_.get(); } ///< null without
  const AIUsageStore* aiUsage() const { return aiUsage_.get(); }

private:
  void apply(const Tick& tick);
  void afterCycle(Task done);
  void setWatched(bool watched, Seconds first);
  void publish(const Tick& tick);
  void addAlerts(std::vector<HealthAlert> newest);
  void extendLiveSeries(const SystemSnapshot& snapshot);
  void judge(const Tick& tick);

  Queue& main_;
  std::unique_ptr<Sampler> sampler_;
  const Attention& attention_;
  const Seams seams_;
  std::shared_ptr<AppModel*> self_; ///< what a late hand-off finds empty
  std::int64_t ticks_ = 0;          ///< applied so far
  bool watched_ = true;             ///< the fast pace is in force
  std::vector<Task> afterCycle_;    ///< run when the next tick has been applied
  std::unique_ptr<Timer> timer_;
  std::unique_ptr<AIUsageStore> aiUsage_;
  std::unique_ptr<Queue> removals_; ///< null until the first
};

} // namespace korvell
