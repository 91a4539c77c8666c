// korvell status: what the keeper measured last, or two cycles of the sampling loop a second apart.

#include "Base/Format.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"
#include "Tool/UsageTable.h"

namespace korvell {

namespace {

struct Current {
  SystemSnapshot snapshot;
  std::optional<PrivilegedUse> privileged;
};

/// The keeper's last measurement, or one of our own.
Current current(Context& context) {
  Current current;
  const auto state = askKeeper(context, {"snapshot", "privileged"});
  const auto* told = state ? state->find("snapshot") : nullptr;
  if (!told || !fromValue(*told, current.snapshot)) {
    auto tick = measure(context);
    return {std::move(tick.snapshot), tick.privileged};
  }
  const auto* privileged = state->find("privileged");
  if (PrivilegedUse use; privileged && fromValue(*privileged, use)) current.privileged = use;
  return current;
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
  const auto [snapshot, privileged] = current(context);
  if (arguments.flag("--json")) {
    auto json = Value::object({{"snapshot", toValue(snapshot)}});
    if (privileged) json.set("privileged", toValue(*privileged));
    printJSON(context.out, json);
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
