// korvell status: what the keeper measured last, or two cycles of the sampling loop a second apart, and what
// is to be said about it.

#include "App/JSONDocuments.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Findings.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"
#include "Tool/UsageTable.h"
#include "Tool/Wrap.h"

namespace korvell {

namespace {

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
  for (const auto& line : summaryLines(out, status.snapshot, status.known, width, status.sensors))
    out.line(line);
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

constexpr std::int64_t bestScore = 100;

int runStatus(Context& context, const Arguments& arguments) {
  const auto least = arguments.number("--check");
  if (least > bestScore) return fail(context, localized("--check takes a score from 0 to 100."), exitUsage);
  const auto status = currentMeasurement(context);
  auto* diagnostics = context.host.diagnostics.get();
  if (arguments.flag("--json"))
    printJSON(context.out,
              statusValue(status, diagnostics ? diagnostics->figureSources() : std::vector<SourceReport>()));
  else
    print(context, status);
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
