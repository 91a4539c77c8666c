// korvell watch: the running model on a full screen, at the loop's own pace.

#include "App/Assembly.h"
#include "App/RemoteModel.h"
#include "Base/HostedQueue.h"
#include "Tool/Commands.h"
#include "Tool/Screen.h"
#include "Tool/WatchScreen.h"

namespace korvell {

namespace {

constexpr Seconds keeperPatience{1};

int runWatch(Context& context, const Arguments&) {
  if (const auto reason = Screen::unavailable(context.out, context.environment))
    return fail(context, *reason);
  Screen screen(context.out);
  HostedQueue main("main", [&screen] { screen.wake(); });
  const FixedAttention watched(true);
  Assembly assembly(context.host, context.clock);
  WatchScreen view;
  const bool estimate = context.host.processes->energyIsEstimate();
  std::unique_ptr<Model> model;
  Subscription subscription;
  const auto draw = [&] {
    const WatchFigures figures{model->snapshot.get(), model->known.get(),     model->report.get(),
                               model->live.get(),     model->hasSample.get(), estimate};
    screen.draw(view.frame(context.out, figures, screen.columns(), screen.rows()));
  };
  const auto show = [&](std::unique_ptr<Model> shown) {
    model = std::move(shown);
    subscription = model->cycle.observe([&](std::int64_t) {
      view.setApps(model->snapshot->apps);
      draw();
    });
    view.setApps(model->snapshot->apps);
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
    const bool isKey = event.kind == Screen::EventKind::key;
    const auto reply = isKey ? view.handleKey(event.key) : WatchScreen::Reply::nothing;
    if (reply == WatchScreen::Reply::quit) return exitOK;
    if (reply == WatchScreen::Reply::redraw || event.kind == Screen::EventKind::resized) draw();
  }
}

} // namespace

Command watchCommand() { return {"watch", "Follow the machine on a full screen; q quits", {}, runWatch}; }

} // namespace korvell
