// korvell status: what the keeper measured last, or two cycles of the sampling loop a second apart.

#include "Base/Format.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"
#include "Tool/UsageTable.h"

namespace korvell {

namespace {

/// The keeper's last measurement, or one of our own.
SystemSnapshot currentSnapshot(Context& context) {
  SystemSnapshot snapshot;
  const auto state = askKeeper(context, {"snapshot"});
  const auto* told = state ? state->find("snapshot") : nullptr;
  return told && fromValue(*told, snapshot) ? snapshot : measure(context).snapshot;
}

constexpr std::size_t shownApps = 5;

void printTopApps(Context& context, std::vector<AppUsage> apps, int width) {
  if (apps.empty()) return;
  const auto& processes = context.host.processes;
  const UsageTable table(context.out, width, showsEnergy(apps), processes && processes->energyIsEstimate());
  sortByUsage(apps, UsageKey::cpu);
  apps.resize(std::min(apps.size(), shownApps));
  context.out.line();
  context.out.line(table.titles(localized("Application"), UsageKey::cpu));
  for (const auto& app : apps) context.out.line(table.line(app));
}

int runStatus(Context& context, const Arguments& arguments) {
  const auto snapshot = currentSnapshot(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, Value::object({{"snapshot", toValue(snapshot)}}));
    return exitOK;
  }
  const int width = std::min(context.out.columns(), widestSummary);
  for (const auto& line : summaryLines(context.out, snapshot, width)) context.out.line(line);
  printTopApps(context, snapshot.apps, width);
  return exitOK;
}

} // namespace

Command statusCommand() {
  return {"status", "Show how the machine is doing right now", {jsonOption()}, runStatus};
}

} // namespace korvell
