#include "UI/Parts/TopApps.h"

#include "Base/Localization.h"
#include "UI/Parts/Figures.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

Figure rate(double value, bool isKnown) {
  return figureOf(Unit::bytesPerSecond, isKnown && value > 0 ? std::optional(value) : std::nullopt);
}

AppRow rowOf(const AppUsage& app, UsageKey key, double greatest, const KnownParts& known) {
  const double cpu = app.cpu();
  AppRow row{.id = app.id,
             .name = app.name,
             .processes = int(app.processes.size()),
             .cpu = {fmt::format("{:.1f}", cpu), "%"},
             .memory = figureOf(Unit::memory, double(app.memory())),
             .disk = rate(usageValue(UsageKey::disk, app), true),
             .network = rate(usageValue(UsageKey::network, app), known.has(KnownPart::processTraffic)),
             .level = greatest > 0 ? usageValue(key, app) / greatest : 0};
  row.spoken = localized("{name}, {processes}, {cpu} percent of one core, {memory} {unit}",
                         {{"name", app.name},
                          {"processes", counted(row.processes, "1 process", "{n} processes")},
                          {"cpu", row.cpu.number},
                          {"memory", row.memory.number},
                          {"unit", row.memory.unit}});
  return row;
}

} // namespace

std::vector<AppRow> topApps(const Model& model, UsageKey key, std::size_t count) {
  if (!*model.hasSample) return {};
  std::vector<const AppUsage*> apps;
  for (const auto& app : model.snapshot->apps) apps.push_back(&app);
  const auto isBefore = [key](const AppUsage* a, const AppUsage* b) {
    const double one = usageValue(key, *a), other = usageValue(key, *b);
    return one != other ? one > other : a->name < b->name;
  };
  const auto shown = std::min(count, apps.size());
  std::partial_sort(apps.begin(), apps.begin() + std::ptrdiff_t(shown), apps.end(), isBefore);
  const double greatest = shown > 0 ? usageValue(key, *apps.front()) : 0;
  std::vector<AppRow> rows;
  for (std::size_t i = 0; i < shown; ++i) rows.push_back(rowOf(*apps[i], key, greatest, *model.known));
  return rows;
}

} // namespace korvell
