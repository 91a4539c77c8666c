#include "UI/Overview/HealthPage.h"

#include "Base/Localization.h"
#include "UI/Parts/Figures.h"

namespace korvell {

Icon alertIcon(HealthAlert::Kind kind) {
  switch (kind) {
  case HealthAlert::Kind::cpu:
    return Icon::cpu;
  case HealthAlert::Kind::memoryGrowth:
  case HealthAlert::Kind::memoryPressure:
    return Icon::memory;
  case HealthAlert::Kind::disk:
  case HealthAlert::Kind::diskSpace:
    return Icon::disk;
  case HealthAlert::Kind::network:
    return Icon::network;
  case HealthAlert::Kind::aiPlanLimit:
    return Icon::ai;
  }
  return Icon::alerts;
}

namespace {

/// No machine is idle all day: a mean of 0 says that nothing was recorded today.
std::string reasonWithoutTotals(const Model& model) {
  if (!*model.hasSample) return localized("Measuring…");
  if (*model.historyProblem) return (*model.historyProblem)->detail;
  return model.totals->cpuToday > 0 ? std::string() : localized("Nothing was recorded today.");
}

std::vector<HealthPage::Total> todayOf(const Model& model) {
  const auto& totals = *model.totals;
  const auto reason = reasonWithoutTotals(model);
  const auto total = [&](const char* title, Unit unit, double value) {
    const bool isKnown = value > 0 || reason.empty();
    return HealthPage::Total{localized(title), figureOf(unit, isKnown ? std::optional(value) : std::nullopt),
                             isKnown ? std::string() : reason};
  };
  return {total("CPU, on average", Unit::percent, totals.cpuToday),
          total("Written to disk", Unit::bytes, totals.diskWrittenToday),
          total("Network", Unit::bytes, totals.networkToday)};
}

} // namespace

HealthPage healthPage(const Model& model, const HealthContext& context) {
  HealthPage page{.head = healthHead(model, context.weekScore, context.hasBatterySettings),
                  .tiles = measureTiles(model),
                  .apps = topApps(model, UsageKey::cpu, HealthPage::mostApps)};
  const bool isMeasured = *model.hasSample;
  const auto now = model.snapshot->date;
  if (isMeasured)
    page.updated = localized("Updated {time}", {{"time", clockTextWithSeconds(context.zone, now)}});
  if (isMeasured && page.head.findings.empty())
    page.reassurance = localized("Everything that was measured is within its limits.");
  page.today = todayOf(model);
  for (const auto& alert : *model.alerts) {
    if (page.alerts.size() == HealthPage::mostAlerts) break;
    page.alerts.push_back({alertIcon(alert.kind), alert.title, dayAndTime(context.zone, alert.date, now)});
  }
  return page;
}

} // namespace korvell
