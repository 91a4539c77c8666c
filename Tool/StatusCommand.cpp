// korvell status: what the keeper measured last, or two cycles of the sampling loop a second apart.

#include "Base/Format.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"

namespace korvell {

namespace {

/// The keeper's last measurement, or one of our own.
SystemSnapshot currentSnapshot(Context& context) {
  SystemSnapshot snapshot;
  const auto state = askKeeper(context, {"snapshot"});
  const auto* told = state ? state->find("snapshot") : nullptr;
  return told && fromValue(*told, snapshot) ? snapshot : measure(context).snapshot;
}

int runStatus(Context& context, const Arguments& arguments) {
  const auto snapshot = currentSnapshot(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, Value::object({{"snapshot", toValue(snapshot)}}));
    return exitOK;
  }
  const int width = std::min(context.out.columns(), widestSummary);
  for (const auto& line : summaryLines(context.out, snapshot, width)) context.out.line(line);
  return exitOK;
}

} // namespace

Command statusCommand() {
  return {"status", "Show how the machine is doing right now", {jsonOption()}, runStatus};
}

} // namespace korvell
