#include "Tool/Measure.h"

#include "Tool/AskKeeper.h"

namespace korvell {

Tick measure(Context& context) { return measureTwice(context.host, context.clock); }

Measurement currentMeasurement(Context& context) {
  const auto state = askKeeper(context, measurementParts);
  if (auto told = measurementOf(state)) return std::move(*told);
  auto own = ownMeasurement(measure(context), context.host, context.clock);
  own.historyProblem = historyProblemOf(state);
  own.keeperIsRunning = state.isRunning();
  return own;
}

} // namespace korvell
