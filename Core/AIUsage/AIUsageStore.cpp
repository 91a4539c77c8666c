#include "Core/AIUsage/AIUsageStore.h"

namespace korvell {

namespace {

constexpr Seconds leeway{10};

} // namespace

AIUsageStore::AIUsageStore(Queue& main, const QueueFactory& makeQueue, const Clock& clock,
                           MakeScanner makeScanner, PlanLimitAlerts::Seams alerts)
    : summary(main), isScanning(main), outcome(main), main_(main), clock_(clock),
      makeScanner_(std::move(makeScanner)), alerts_(std::move(alerts)), queue_(makeQueue(queueLabel)) {}

AIUsageStore::~AIUsageStore() { ending_.cancel(); }

void AIUsageStore::start() {
  if (timer_) return;
  timer_ = main_.timer([this] { refresh(); });
  timer_->schedule(firstRefresh, refreshInterval, leeway);
}

void AIUsageStore::refresh() {
  if (*isScanning) return;
  isScanning.set(true);
  queue_->async([this, watch = life_.watch()] {
    auto result = scan();
    main_.async([watch, result = std::move(result)]() mutable {
      if (auto* store = watch.get()) store->publish(std::move(result));
    });
  });
}

AIUsageStore::Refreshed AIUsageStore::scan() {
  if (!scanner_) scanner_ = makeScanner_(ending_);
  const Date now = clock_.now();
  const auto stats = scanner_->refresh(now);
  Refreshed result{scanner_->summary(days(AIPeriod::month), now), {}, scanner_->lastOutcome()};
  result.summary.lastScan = stats;
  if (const auto& limits = result.summary.codexLimits) result.due = alerts_.markDue(*limits, now);
  return result;
}

void AIUsageStore::publish(Refreshed result) {
  outcome.set(result.outcome);
  summary.set(std::move(result.summary));
  isScanning.set(false);
  checkPlanLimits(result.due);
}

void AIUsageStore::checkPlanLimits(const std::vector<AIPlanLimit>& due) {
  for (const auto& alert : alerts_.post(due, clock_.now()))
    if (onAlert) onAlert(alert);
}

} // namespace korvell
