#pragma once
// The AI usage as the interface sees it: scans on a timer, and the newest summary.
//
// Main thread only (the queue `main`). Scans run on the queue "Korvell.aiUsage", which the store owns and to
// which the scanner belongs from its creation on; they never overlap. So are the marks of alerted windows
// stored, because storing a setting waits for the disk. Destroying the store ends a running
// scan early; the next start repeats it.

#include "Base/Lifeline.h"
#include "Base/Published.h"
#include "Base/Queue.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Core/AIUsage/PlanLimitAlerts.h"

namespace korvell {

class AIUsageStore {
public:
  static constexpr const char* queueLabel = "Korvell.aiUsage";
  static constexpr Seconds firstRefresh{5};
  static constexpr Seconds refreshInterval{300};

  /// Opens the database; called on the store's own queue at the first refresh.
  using MakeScanner = std::function<std::unique_ptr<AIUsageScanner>(Cancellation)>;

  AIUsageStore(Queue& main, const QueueFactory& makeQueue, const Clock& clock, MakeScanner makeScanner,
               PlanLimitAlerts::Seams alerts);
  ~AIUsageStore();
  AIUsageStore(const AIUsageStore&) = delete;
  AIUsageStore& operator=(const AIUsageStore&) = delete;

  Published<AIUsageSummary> summary; ///< the last 30 days; empty until the first refresh has ended
  Published<bool> isScanning;
  Published<AIUsageScanner::Outcome> outcome;      ///< of the last refresh, known before its summary is told
  std::function<void(const HealthAlert&)> onAlert; ///< gets each plan-limit alert that was accepted

  /// The zone of the summary's days.
  const TimeZone& zone() const { return alerts_.zone(); }

  /// Refreshes from now on, first after five seconds. Calling it again changes nothing.
  void start();
  /// Scans once, unless a scan is running.
  void refresh();

private:
  struct Refreshed {
    AIUsageSummary summary;
    std::vector<AIPlanLimit> due; ///< to be alerted; marked already
    AIUsageScanner::Outcome outcome = AIUsageScanner::Outcome::done;
  };
  Refreshed scan();
  void publish(Refreshed result);
  void checkPlanLimits(const std::vector<AIPlanLimit>& due);

  Queue& main_;
  const Clock& clock_;
  MakeScanner makeScanner_;
  PlanLimitAlerts alerts_;
  Cancellation ending_;
  Lifeline<AIUsageStore> life_{*this};
  std::unique_ptr<Timer> timer_;
  std::unique_ptr<AIUsageScanner> scanner_;
  std::unique_ptr<Queue> queue_; ///< ends first
};

} // namespace korvell
