// korvell status: what the keeper measured last, or two cycles of the sampling loop a second apart, and what
// is to be said about it.

#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Findings.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"
#include "Tool/UsageTable.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

std::string withoutAverage(bool fromKeeper) {
  return fromKeeper ? localized("Fewer than eight of the last ten minutes have been recorded.")
                    : localized("Only a running Korvell records.");
}

/// The parts, those that are not known with the reason that `doctor` gives.
Value knownValue(Context& context, const KnownParts& known, bool fromKeeper) {
  Value value = toValue(known);
  if (!context.host.diagnostics) return value;
  const auto sources = context.host.diagnostics->figureSources();
  for (const auto& part : allCases<KnownPart>()) {
    if (known.has(part.value)) continue;
    const auto reason = part.value == KnownPart::tenMinuteAverage ? withoutAverage(fromKeeper)
                                                                  : reasonFor(part.value, sources);
    if (reason.empty()) continue;
    value.set(part.rawValue, Value::object({{"state", rawValue(known[part.value])}, {"reason", reason}}));
  }
  return value;
}

Value jsonOf(Context& context, const Measurement& status) {
  Value value = reportValue(status.report);
  value.set("keeper", status.fromKeeper);
  value.set("snapshot", toValue(status.snapshot));
  value.set("known", knownValue(context, status.known, status.fromKeeper));
  if (status.privileged) value.set("privileged", toValue(*status.privileged));
  if (status.historyProblem) value.set("historyProblem", toValue(*status.historyProblem));
  return value;
}

constexpr std::size_t shownApps = 5;

void printTopApps(Context& context, std::vector<AppUsage> apps, const KnownParts& known, int width) {
  if (apps.empty()) return;
  const UsageTable table(context.out, width, UsageKey::cpu, known,
                         context.host.processes->energyIsEstimate());
  sortByUsage(apps, UsageKey::cpu);
  apps.resize(std::min(apps.size(), shownApps));
  context.out.line();
  context.out.line(table.titles(localized("Application")));
  for (const auto& app : apps) context.out.line(table.line(app));
}

void print(Context& context, const Measurement& status) {
  Terminal& out = context.out;
  const int width = std::min(out.columns(), widestSummary);
  for (const auto& line : findingLines(out, status.report, status.known, width)) out.line(line);
  out.line();
  for (const auto& line : summaryLines(out, status.snapshot, status.known, width)) out.line(line);
  printTopApps(context, status.snapshot.apps, status.known, width);
  const auto remark = [&](Ink ink, const std::string& text) {
    out.line();
    for (const auto& line : wrapped(escapedControls(text), width)) out.line(out.ink(ink, line));
  };
  if (status.historyProblem)
    remark(Ink::warning,
           localized("Nothing is recorded: {reason}", {{"reason", status.historyProblem->detail}}));
  if (!status.fromKeeper && !status.keeperIsRunning)
    remark(Ink::dim,
           localized("Idle servers, the CPU over ten minutes and alerts need a running Korvell: the "
                     "application, or \"korvell run\"."));
}

int runStatus(Context& context, const Arguments& arguments) {
  const auto status = currentMeasurement(context);
  if (arguments.flag("--json"))
    printJSON(context.out, jsonOf(context, status));
  else
    print(context, status);
  const auto least = arguments.number("--check");
  return least && status.report.score < *least ? exitFailed : exitOK;
}

} // namespace

Command statusCommand() {
  return {"status",
          "Show how the machine is doing right now",
          {jsonOption(), {"--check", Option::Kind::number, "Exit with 1 when the score is below this"}},
          runStatus};
}

} // namespace korvell
