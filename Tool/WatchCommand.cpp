// korvell watch: the running model on a full screen, at the loop's own pace.

#include "App/AppModel.h"
#include "App/Assembly.h"
#include "Base/Format.h"
#include "Base/HostedQueue.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Screen.h"
#include "Tool/Summary.h"
#include "Tool/UsageList.h"

#include <ctime>
#include <fmt/format.h>

namespace korvell {

namespace {

std::string clockText(Date date) {
  const auto seconds = std::time_t(date.sinceEpoch);
  std::tm local{};
  localtime_r(&seconds, &local);
  return fmt::format("{:02}:{:02}:{:02}", local.tm_hour, local.tm_min, local.tm_sec);
}

std::vector<std::string> frame(const Terminal& terminal, const AppModel& model, UsageList& list,
                               bool energyIsEstimate, int columns, int rows) {
  const int width = std::min(columns, widestSummary);
  std::vector<std::string> lines;
  const auto time = clockText(model.snapshot->date);
  const std::string name = "Korvell";
  const int gap = std::max(1, width - displayWidth(name) - displayWidth(time));
  lines.push_back(terminal.ink(Ink::accent, name) + std::string(size_t(gap), ' ') + time);
  lines.push_back("");
  if (!model.hasSample.get()) {
    lines.push_back(localized("Measuring…"));
  } else {
    for (auto& line : summaryLines(terminal, *model.snapshot, width)) lines.push_back(std::move(line));
    lines.push_back("");
    const UsageTable table(terminal, width, list.showsEnergy(), energyIsEstimate);
    for (auto& line : list.lines(table, rows - 1 - int(lines.size()))) lines.push_back(std::move(line));
  }
  lines.resize(size_t(std::max(1, rows - 1)));
  lines.push_back(terminal.ink(
      Ink::dim, truncatedToWidth(localized("c m d n e sort · ↑ ↓ move · Enter unfolds · q quits"), width)));
  return lines;
}

int runWatch(Context& context, const Arguments&) {
  if (const auto reason = Screen::unavailable(context.out, context.environment))
    return fail(context, *reason);
  Screen screen(context.out);
  HostedQueue main("main", [&screen] { screen.wake(); });
  FixedAttention watched(true);
  Assembly assembly(context.host, context.clock);
  AppModel model(main, assembly.makeSampler(nullptr), watched);
  UsageList list;
  const bool estimate = context.host.processes && context.host.processes->energyIsEstimate();
  const auto draw = [&] {
    screen.draw(frame(context.out, model, list, estimate, screen.columns(), screen.rows()));
  };
  const auto subscription = model.snapshot.observe([&](const SystemSnapshot& snapshot) {
    list.setApps(snapshot.apps);
    main.async(draw);
  });
  draw();
  for (;;) {
    const auto deadline = main.nextDeadline();
    const auto event =
        screen.next(deadline ? std::optional(deadline->due - main.clock().monotonic()) : std::nullopt);
    main.runDue();
    if (event.kind == Screen::EventKind::quit) return exitOK;
    if (event.kind == Screen::EventKind::key && (event.key == 'q' || event.key == 'Q')) return exitOK;
    const bool changed = event.kind == Screen::EventKind::key && list.handleKey(event.key);
    if (changed || event.kind == Screen::EventKind::resized) draw();
  }
}

} // namespace

Command watchCommand() { return {"watch", "Follow the machine on a full screen; q quits", {}, runWatch}; }

} // namespace korvell
