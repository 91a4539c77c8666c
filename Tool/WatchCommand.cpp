// korvell watch: the running model on a full screen, at the loop's own pace.

#include "App/Assembly.h"
#include "App/RemoteModel.h"
#include "Base/HostedQueue.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Screen.h"
#include "Tool/WatchScreen.h"

namespace korvell {

namespace {

constexpr Seconds keeperPatience{1};
/// A keeper that is silent or starting is asked again.
constexpr Seconds askAgain{10};

class Watch {
public:
  explicit Watch(Context& context)
      : context_(context), screen_(context.out), assembly_(context.host, context.clock),
        isEstimate_(context.host.processes->energyIsEstimate()) {}

  /// Until the user has had enough.
  int run() {
    if (!showKeepers(keeperPatience)) showOwn();
    for (;;) {
      const auto deadline = main_.nextDeadline();
      const auto event =
          screen_.next(deadline ? std::optional(deadline->due - main_.clock().monotonic()) : std::nullopt);
      main_.runDue();
      if (event.kind == Screen::EventKind::quit) return exitOK;
      const bool isKey = event.kind == Screen::EventKind::key;
      const auto reply = isKey ? view_.handleKey(event.key) : WatchScreen::Reply::nothing;
      if (reply == WatchScreen::Reply::quit) return exitOK;
      if (reply == WatchScreen::Reply::redraw || event.kind == Screen::EventKind::resized) draw();
    }
  }

private:
  /// A keeper's figures where there is one: nothing is measured twice, and everybody sees the same.
  bool showKeepers(Seconds patience) {
    auto remote = RemoteModel::connect(main_, *context_.host.defaults, context_.host.folders, patience,
                                       [this] { showOwn(); });
    if (!remote) return false;
    keeper_ = {};
    show(std::move(remote));
    return true;
  }
  void showOwn() {
    lookAtKeeper();
    show(assembly_.makeWatchingModel(main_, watched_));
  }
  void lookAtKeeper() {
    keeper_ = keeperState(context_, {});
    const auto* hasSample = keeper_ ? keeper_->find("hasSample") : nullptr;
    keeper_.isStarting = keeper_ && !(hasSample && hasSample->asBool() == true);
    if (keeper_.isRunning()) asking_->schedule(askAgain, Seconds{0}, Seconds{1});
  }
  void askKeeperAgain() {
    lookAtKeeper();
    if (keeper_ && showKeepers(context_.keeperPatience)) return asking_->cancel();
    draw();
  }
  void show(std::unique_ptr<Model> shown) {
    model_ = std::move(shown);
    subscription_ = model_->cycle.observe([this](std::int64_t) {
      view_.setApps(model_->snapshot->apps);
      draw();
    });
    view_.setApps(model_->snapshot->apps);
    draw();
  }
  void draw() {
    const WatchFigures figures{model_->snapshot.get(),
                               model_->known.get(),
                               model_->report.get(),
                               model_->live.get(),
                               model_->hasSample.get(),
                               isEstimate_,
                               keeper_,
                               model_->sensors.get()};
    screen_.draw(view_.frame(context_.out, figures, screen_.columns(), screen_.rows()));
  }

  Context& context_;
  Screen screen_;
  HostedQueue main_{"main", [this] { screen_.wake(); }};
  const FixedAttention watched_{true};
  Assembly assembly_;
  WatchScreen view_;
  const bool isEstimate_;
  KeeperAnswer keeper_; ///< of one whose figures are not shown
  std::unique_ptr<Timer> asking_ = main_.timer([this] { askKeeperAgain(); });
  std::unique_ptr<Model> model_;
  Subscription subscription_;
};

int runWatch(Context& context, const Arguments&) {
  if (const auto reason = Screen::unavailable(context.out, context.environment))
    return fail(context, *reason);
  return Watch(context).run();
}

} // namespace

Command watchCommand() { return {"watch", "Follow the machine on a full screen; q quits", {}, runWatch}; }

} // namespace korvell
