// korvell status: two cycles of the sampling loop a second apart, then what the second one found.

#include "Base/Format.h"
#include "Core/Loop/Sampler.h"
#include "Tool/Commands.h"
#include "Tool/Measure.h"
#include "Tool/Summary.h"

namespace korvell {

namespace {

int runStatus(Context& context, const Arguments& arguments) {
  const Tick tick = measure(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, Value::object({{"snapshot", toValue(tick.snapshot)}}));
    return exitOK;
  }
  const int width = std::min(context.out.columns(), widestSummary);
  for (const auto& line : summaryLines(context.out, tick.snapshot, width)) context.out.line(line);
  return exitOK;
}

} // namespace

Command statusCommand() {
  return {"status", "Show how the machine is doing right now", {jsonOption()}, runStatus};
}

} // namespace korvell
