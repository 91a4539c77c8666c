// korvell bar: the menu bar's item as a line for status bars that have no tray.

#include "App/Assembly.h"
#include "App/RemoteModel.h"
#include "App/StatusBar.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/HeadlessLoop.h"
#include "Tool/Measure.h"

#include <algorithm>
#include <unistd.h>

namespace korvell {

namespace {

/// Without a keeper one is looked for so often.
constexpr Seconds askAgain{10};

struct Look {
  MenuBarStyle style;
  StatusBarFormat format;

  bool isGraph() const { return style == MenuBarStyle::graphs; }
};

Look lookOf(const Context& context, const Arguments& arguments) {
  const auto style = fromRawValue<MenuBarStyle>(arguments.text("--style").value_or(""));
  const auto format = fromRawValue<StatusBarFormat>(arguments.text("--format").value_or(""));
  return {style.value_or(menuBarStyle(*context.host.defaults)), format.value_or(StatusBarFormat::plain)};
}

/// The applications are the largest part of what a keeper knows, and no bar shows them.
std::vector<std::string> partsFor(const Look& look) {
  std::vector<std::string> parts{"machine", "report"};
  if (look.isGraph()) parts.emplace_back("live");
  return parts;
}

std::vector<double> lastShares(const std::vector<HistoryPoint>& points) {
  std::vector<double> shares;
  const auto count = std::min(points.size(), MenuBarState::historyLength);
  for (auto point = points.end() - std::ptrdiff_t(count); point != points.end(); ++point)
    shares.push_back(point->value);
  return shares;
}

/// Programs read it, and JSON is UTF-8 whatever the locale.
void print(Context& context, std::string_view line, StatusBarFormat format) {
  if (format == StatusBarFormat::plain || format == StatusBarFormat::tmux)
    context.out.line(line);
  else
    context.out.writeRaw(std::string(line) + "\n");
  context.out.flush();
}

void printOpening(Context& context, const Look& look) {
  if (const auto opening = statusBarOpening(look.format); !opening.empty())
    print(context, opening, look.format);
}

class FollowingBar {
public:
  FollowingBar(Context& context, Look look)
      : context_(context), look_(look), assembly_(context.host, context.clock) {}

  /// Until a signal comes or nobody reads any more.
  int run() {
    printOpening(context_, look_);
    look();
    if (!model_) showOwn();
    loop_.run();
    return exitOK;
  }

private:
  void look() {
    const RemoteInterest interest{partsFor(look_), false};
    auto remote = RemoteModel::connect(
        loop_.main(), *context_.host.defaults, context_.host.folders, context_.keeperPatience,
        [this] { showOwn(); }, interest);
    if (remote)
      show(std::move(remote));
    else
      asking_->schedule(askAgain, Seconds{0}, Seconds{5});
  }
  void showOwn() {
    show(assembly_.makeWatchingModel(loop_.main(), unwatched_));
    asking_->schedule(askAgain, Seconds{0}, Seconds{5});
  }
  void show(std::unique_ptr<Model> shown) {
    model_ = std::move(shown);
    subscription_ = model_->cycle.observe([this](std::int64_t) { draw(); });
    draw();
  }
  /// Bars paint again whatever they are told: they are told only what is new.
  void draw() {
    if (!*model_->hasSample) return;
    auto figures = MenuBarFigures::of(*model_->snapshot, *model_->report);
    if (look_.isGraph()) {
      const auto cpu = model_->live->find(Metric::cpu);
      if (cpu != model_->live->end()) figures.cpuHistory = lastShares(cpu->second);
    }
    auto line = statusBarLine(figures, *model_->report, look_.style, look_.format);
    if (line == shown_) return;
    print(context_, (shown_.empty() || look_.format != StatusBarFormat::i3bar ? "" : ",") + line,
          look_.format);
    shown_ = std::move(line);
  }

  Context& context_;
  const Look look_;
  HeadlessLoop loop_;
  ReaderWatch reader_{loop_, STDOUT_FILENO};
  const FixedAttention unwatched_{false};
  Assembly assembly_;
  std::string shown_;
  std::unique_ptr<Timer> asking_ = loop_.main().timer([this] { look(); });
  std::unique_ptr<Model> model_;
  Subscription subscription_;
};

int printOnce(Context& context, const Look& look) {
  Measurement status;
  const auto state = keeperState(context, {"machine", "report", look.isGraph() ? "live" : "report"});
  // A keeper that has not measured yet tells no report, and what it is is said further down.
  const auto* machine = state ? state->find("machine") : nullptr;
  const auto* report = state ? state->find("report") : nullptr;
  if (!machine || !report || !fromValue(*machine, status.snapshot) || !fromValue(*report, status.report))
    status = currentMeasurement(context);
  auto figures = MenuBarFigures::of(status.snapshot, status.report);
  figures.cpuHistory = {status.snapshot.cpu.total};
  std::vector<HistoryPoint> points;
  const auto* series = state ? state->find("live") : nullptr;
  const auto* cpu = series ? series->find(rawValue(Metric::cpu)) : nullptr;
  if (cpu && fromValue(*cpu, points)) figures.cpuHistory = lastShares(points);
  printOpening(context, look);
  print(context, statusBarLine(figures, status.report, look.style, look.format), look.format);
  if (const auto closing = statusBarClosing(look.format); !closing.empty())
    print(context, closing, look.format);
  return exitOK;
}

int runBar(Context& context, const Arguments& arguments) {
  const auto look = lookOf(context, arguments);
  return arguments.flag("--follow") ? FollowingBar(context, look).run() : printOnce(context, look);
}

} // namespace

Command barCommand() {
  return {"bar",
          "Print the tray item as a line for a status bar",
          {{"--style", Option::Kind::text, "What it shows, without it what the settings say",
            choicesOf<MenuBarStyle>()},
           {"--format", Option::Kind::text, "Who reads it (plain)", choicesOf<StatusBarFormat>()},
           {"--follow", Option::Kind::flag, "Print a line whenever it changes, until nobody reads"}},
          runBar};
}

} // namespace korvell
