// korvell watch: the running model on a full screen, at the loop's own pace.

#include "App/Assembly.h"
#include "App/RemoteModel.h"
#include "Base/Format.h"
#include "Base/HostedQueue.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Findings.h"
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

/// The two ends of a line.
std::string spread(const std::string& left, const std::string& right, int width) {
  const int gap = std::max(1, width - inkedWidth(left) - inkedWidth(right));
  return left + std::string(std::size_t(gap), ' ') + right;
}

constexpr Seconds keeperPatience{1};

struct View {
  const Terminal& terminal;
  const Model& model;
  UsageList& list;
  bool energyIsEstimate;
};

std::vector<std::string> frame(const View& view, int columns, int rows) {
  constexpr int findingsShare = 4; // a quarter of the screen, the rest is for figures
  const auto& [terminal, model, list, energyIsEstimate] = view;
  const int width = std::min(columns, widestSummary);
  const bool ready = model.hasSample.get();
  auto lines = ready ? findingLines(terminal, *model.report, width, rows / findingsShare)
                     : std::vector{localized("Measuring…")};
  const auto sign = terminal.ink(Ink::accent, "Korvell") + "  " + clockText(model.snapshot->date);
  lines.front() = spread(lines.front(), sign, width);
  if (ready) {
    lines.emplace_back();
    for (auto& line : summaryLines(terminal, *model.snapshot, width)) lines.push_back(std::move(line));
    lines.emplace_back();
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
  const FixedAttention watched(true);
  Assembly assembly(context.host, context.clock);
  UsageList list;
  const bool estimate = context.host.processes->energyIsEstimate();
  std::unique_ptr<Model> model;
  Subscription subscription;
  const auto draw = [&] {
    screen.draw(frame({context.out, *model, list, estimate}, screen.columns(), screen.rows()));
  };
  const auto show = [&](std::unique_ptr<Model> shown) {
    model = std::move(shown);
    subscription = model->cycle.observe([&](std::int64_t) {
      list.setApps(model->snapshot->apps);
      draw();
    });
    list.setApps(model->snapshot->apps);
    draw();
  };
  // A keeper's figures where there is one: nothing is measured twice, and everybody sees the same.
  auto remote = RemoteModel::connect(main, *context.host.defaults, context.host.folders, keeperPatience,
                                     [&] { show(assembly.makeWatchingModel(main, watched)); });
  show(remote ? std::unique_ptr<Model>(std::move(remote)) : assembly.makeWatchingModel(main, watched));
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
