#include "UI/Parts/TopApps.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/Machine/Quit.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/SpokenFigure.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

Figure rate(double value, bool isKnown) {
  return figureOf(Unit::bytesPerSecond, isKnown ? std::optional(value) : std::nullopt);
}

AppRow rowOf(const AppUsage& app, UsageKey key, double greatest, const Model& model) {
  const double cpu = app.cpu();
  const double disk = usageValue(UsageKey::disk, app), network = usageValue(UsageKey::network, app);
  const bool hasDisk = disk > 0 || !isHidden(model, app);
  const bool hasNetwork =
      model.known->has(KnownPart::processTraffic) && (network > 0 || !isHidden(model, app));
  AppRow row{.id = app.id,
             .name = app.name,
             .icon = app.bundlePath,
             .isKorvell = isKorvell(app),
             .processes = int(app.processes.size()),
             .isSystem = isSystemGroup(app),
             .cpu = {Format::decimal(cpu, 1), "%"},
             .memory = figureOf(Unit::memory, double(app.memory())),
             .disk = rate(disk, hasDisk),
             .network = rate(network, hasNetwork),
             .level = greatest > 0 ? usageValue(key, app) / greatest : 0};
  if (!hasDisk)
    row.note = localized("The system does not tell you what other users' processes read and write.");
  else if (!hasNetwork)
    row.note = localized("The system does not tell the traffic of each app.");
  row.spoken = localized("{name}, {processes}, {cpu}, {memory}",
                         {{"name", app.name},
                          {"processes", counted(row.processes, "1 process", "{n} processes")},
                          {"cpu", spokenFigure(Unit::corePercent, cpu)},
                          {"memory", spokenFigure(row.memory)}});
  return row;
}

} // namespace

bool isHidden(const Model& model, const AppUsage& app) {
  return isSystemGroup(app) && *model.privileged && (*model.privileged)->hidden > 0;
}

bool isKorvell(const AppUsage& app) {
  const auto isOurs = [](const ProcessUsage& process) {
    const auto program = process.path.substr(process.path.rfind('/') + 1);
    return lowercased(program.empty() ? process.name : program).starts_with("korvell");
  };
  return !app.processes.empty() && std::ranges::all_of(app.processes, isOurs);
}

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
  for (std::size_t i = 0; i < shown; ++i) rows.push_back(rowOf(*apps[i], key, greatest, model));
  return rows;
}

std::vector<AppRow> settled(std::vector<AppRow> rows, const std::vector<AppRow>& before) {
  std::vector<std::optional<AppRow>> places(rows.size());
  std::vector<AppRow> others;
  for (auto& row : rows) {
    const auto place = std::size_t(std::ranges::find(before, row.id, &AppRow::id) - before.begin());
    if (place < places.size() && !places[place])
      places[place] = std::move(row);
    else
      others.push_back(std::move(row));
  }
  auto other = others.begin();
  for (std::size_t i = 0; i < rows.size(); ++i)
    rows[i] = places[i] ? *std::move(places[i]) : std::move(*other++);
  return rows;
}

} // namespace korvell
