#pragma once
// The model of a process that measures: it drives the sampler and publishes what each cycle found.
//
// Main thread only (the queue `main` that it is given). It never waits for the sampler: results come by an
// asynchronous hand-off to the main queue. Sampling starts with the construction and ends with the
// destruction, which waits for a cycle in progress and drops its result. The AI usage is scanned on the
// store's own timer meanwhile; its plan-limit alerts join the others.

#include "App/HistoryQueries.h"
#include "App/Model.h"
#include "App/WidgetPublisher.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Core/AIUsage/AIUsageStore.h"
#include "Core/Health/AlertLog.h"
#include "Core/Loop/ProcessActions.h"
#include "Core/Loop/Sampler.h"
#include "Platform/Attention.h"
#include "Platform/Trash.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace korvell {

class AppModel final : public Model {
public:
  /// What the model owns beside itself.
  struct Parts {
    std::unique_ptr<HistoryStore> history;
    std::unique_ptr<Sampler> sampler;           ///< records in that history, where it keeps
    std::unique_ptr<AIUsageStore> aiUsage{};    ///< null: no accounting of AI usage
    std::unique_ptr<AlertLog> alertLog{};       ///< null: the alerts end with the model
    std::unique_ptr<WidgetPublisher> widgets{}; ///< null: the widget's document is left to others
  };
  /// What the model asks; all of it outlives the model.
  struct Seams {
    MachineState& state;
    const UserDefaults& defaults;
    Notifications& notifications; ///< asked for permission once
    QuitServices processes;
    LaunchItems& launchItems;
    Trash& trash;
    QueueFactory makeQueue; ///< for removing startup items, when it is first needed
  };

  AppModel(Queue& main, Parts parts, const Attention& attention, Seams seams);
  ~AppModel() override;

  /// Ends the sampling and writes the minute in progress; to be destroyed afterwards. Why the last minutes
  /// could not be stored; nothing when they were.
  std::optional<HistoryProblem> finish();

  // The user's actions. `done` is called once, on the main queue, unless the model ends before; by then the
  // lists above show what has changed, but for applications, which take their time to quit.

  /// Stops a development server, politely and after three seconds for good.
  void stop(const DevServer& server, std::function<void(StopOutcome)> done);
  /// Asks an application of the snapshot to quit, or ends it at once; never this process.
  void quit(const AppUsage& app, bool force, std::function<void(QuitResult)> done);
  void quit(const std::string& bundlePath, std::function<void(QuitResult)> done);
  /// The same of processes that somebody else saw.
  void quit(std::vector<QuitTarget> targets, bool force, std::function<void(QuitResult)> done);
  /// Who would be ended, as the last cycle found them: see quitTargets().
  void targets(const AppUsage& app, bool force, std::function<void(std::vector<QuitTarget>)> done);
  /// What is known of a process of the last cycle; nothing when it is gone.
  void identify(ProcessID pid, std::function<void(const std::optional<ProcessSampler::Identity>&)> done);
  void rescanStartupItems(Task done);
  /// Stops a leftover's job and moves its file to the Trash.
  void remove(const StartupItem& item, std::function<void(Outcome)> done);

  /// A cycle at once; `done` when the values are those of one that began after this call.
  void refresh(Task done);
  /// The user has just opened something: the fast pace, at once.
  void wake();
  /// How many processes show this model to somebody; the fast pace while there are any.
  void setOnlookers(std::size_t count);
  Sampler& sampler() { return *sampler_; }
  HistoryStore& history() { return *history_; }
  HistoryQueries& queries() { return queries_; }
  AIUsageStore* aiUsage() { return aiUsage_.get(); } ///< null without
  const AIUsageStore* aiUsage() const { return aiUsage_.get(); }

private:
  void stop();
  void apply(const Tick& tick);
  void setWatched(bool watched, Seconds first);
  void publish(const Tick& tick, Publication& publication);
  std::vector<HealthAlert> withOlder(std::vector<HealthAlert> newest) const;
  void judge(const Tick& tick, Publication& publication);

  Queue& main_;
  const Attention& attention_;
  const Seams seams_;
  bool watched_ = true; ///< the fast pace is in force
  std::size_t onlookers_ = 0;
  std::vector<Task> afterCycle_; ///< run when the next tick has been applied
  // They end in the reverse order, the history last, with the minute in progress.
  std::unique_ptr<HistoryStore> history_;
  std::unique_ptr<AlertLog> alertLog_;
  std::unique_ptr<Sampler> sampler_;
  std::unique_ptr<ProcessActions> actions_;
  HistoryQueries queries_;
  std::unique_ptr<WidgetPublisher> widgets_; ///< asks the history on a queue of its own
  Lifeline<AppModel> life_{*this};
  std::unique_ptr<Timer> timer_;
  std::unique_ptr<AIUsageStore> aiUsage_;
  std::unique_ptr<Queue> removals_; ///< null until the first
};

} // namespace korvell
