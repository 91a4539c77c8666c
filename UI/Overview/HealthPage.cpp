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
  const auto& totals = *model.totals;
  const auto known = [isMeasured](double value) { return isMeasured ? std::optional(value) : std::nullopt; };
  page.today = {{localized("CPU, on average"), figureOf(Unit::percent, known(totals.cpuToday))},
                {localized("Written to disk"), figureOf(Unit::bytes, known(totals.diskWrittenToday))},
                {localized("Network"), figureOf(Unit::bytes, known(totals.networkToday))}};
  for (const auto& alert : *model.alerts) {
    if (page.alerts.size() == HealthPage::mostAlerts) break;
    page.alerts.push_back({alertIcon(alert.kind), alert.title, dayAndTime(context.zone, alert.date, now)});
  }
  return page;
}

} // namespace korvell
