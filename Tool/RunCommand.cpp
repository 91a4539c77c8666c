// korvell run: the keeper without an interface. Measures, records, alerts and answers until it is told to
// end.

#include "Agents/MetricsFile.h"
#include "App/Assembly.h"
#include "App/HandOver.h"
#include "App/Keeper.h"
#include "App/KeeperLock.h"
#include "App/LastResort.h"
#include "App/SettingsCheck.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/HeadlessLoop.h"
#include "Tool/Version.h"

namespace korvell {

namespace {

/// Said when it changes, not every minute.
void sayProblem(Context& context, const std::optional<HistoryProblem>& problem) {
  context.err.line("korvell: " + (problem ? localized("Nothing is recorded: {reason}",
                                                      {{"reason", escapedControls(problem->detail)}})
                                          : localized("The history is recorded again.")));
  context.err.flush();
}

void sayTrouble(Context& context, const std::string& trouble) {
  context.err.line("korvell: " + escapedControls(trouble));
  context.err.flush();
}

void say(Context& context, std::string_view text) {
  context.out.line(text);
  context.out.flush();
}

/// Listens, and tells where; a keeper that can't answer keeps all the same.
void answerAt(Context& context, Keeper& keeper, const KeeperLock& lock) {
  const auto usual = keeperSocketPath(context.host.folders), spare = spareSocketPath(context.host.folders);
  for (const auto& socket : {usual, spare})
    if (keeper.listen(socket)) return lock.announce(socket);
  context.err.line("korvell: " + localized("can't answer at {socket}; commands will measure by themselves",
                                           {{"socket", usual}}));
}

/// For a scan that is under way to end; longer than a clean-up's tool gets.
constexpr Seconds timeToEnd{5};

struct Kept {
  bool steppedBack = false; ///< for another keeper that asked, not because of a signal
  std::optional<HistoryProblem> problem;
};

/// Keeps until a signal asks to end or another keeper takes over.
Kept keep(Context& context, HeadlessLoop& loop, const KeeperLock& lock) {
  std::optional<LastResort> lastResort; // outlives what may hang when it ends
  Assembly assembly(context.host, context.clock);
  const FixedAttention unwatched(false);
  const auto model = assembly.makeKeepingModel(
      loop.main(), unwatched, [&context](const std::string& trouble) { sayTrouble(context, trouble); });
  const auto problems = model->historyProblem.observe(
      [&context](const std::optional<HistoryProblem>& problem) { sayProblem(context, problem); });
  const auto actions = assembly.makeActions(
      loop.main(), [&model]() -> AppModel& { return *model; }, assembly.lateStorageScanner(loop.main()));
  Keeper keeper(loop.main(), *model, *actions);
  const SettingsWatch settings(loop.main(), *context.host.defaults,
                               [&context](const std::string& trouble) { sayTrouble(context, trouble); });
  const MetricsFile metrics(loop.main(), *model, *context.host.defaults, systemQueueFactory(), version,
                            [&context](const std::string& trouble) { sayTrouble(context, trouble); });
  Kept kept;
  constexpr Seconds timeToAnswer{0.1};
  const auto stepBack = loop.main().timer([&] {
    kept.steppedBack = true;
    loop.quit();
  });
  keeper.addAction(yieldAction, [&](const Value&, const Keeper::Answer& answer) {
    answer(Value::object({{"ok", true}}));
    stepBack->schedule(timeToAnswer, Seconds{0}, Seconds{0});
  });
  answerAt(context, keeper, lock);
  say(context, localized("Korvell is measuring and recording. An interrupt (Ctrl-C) ends it."));
  loop.run();
  kept.problem = model->finish();
  lastResort.emplace(timeToEnd, kept.problem ? exitFailed : exitOK);
  return kept;
}

/// Until nobody else keeps; false when a signal asked to end meanwhile.
bool waitForTurn(Context& context, HeadlessLoop& loop) {
  bool isFree = false;
  std::optional<LockWait> wait;
  const auto grace = loop.main().timer([&] {
    wait.emplace(loop.main(), context.host.folders, [&] {
      isFree = true;
      loop.quit();
    });
  });
  grace->schedule(yieldGrace, Seconds{0}, Seconds{1});
  loop.run();
  return isFree;
}

int runKeeper(Context& context, const Arguments& arguments) {
  const auto& folders = context.host.folders;
  const bool takesOver = arguments.flag("--take-over");
  if (takesOver)
    if (const auto state = keeperState(context, {}); state.isSilent) return fail(context, silence(state));
  std::optional lock(takesOver ? takeOver(folders) : KeeperLock::acquire(folders));
  if (!*lock) return fail(context, lock->reason());
  if (const auto& open = context.host.openWatch)
    context.host.notifications->setOpenHandler([open](const std::string&) { open(); });
  HeadlessLoop loop;
  for (;;) {
    const auto kept = keep(context, loop, **lock);
    if (kept.problem)
      fail(context, localized("The last minutes could not be recorded: {reason}",
                              {{"reason", escapedControls(kept.problem->detail)}}));
    if (!kept.steppedBack) return kept.problem ? exitFailed : exitOK;
    say(context, localized("Another Korvell keeps now. This one waits and comes back when that one ends."));
    lock.reset();
    for (std::string said; !lock;) {
      if (!waitForTurn(context, loop)) return exitOK;
      if (auto next = KeeperLock::acquire(folders))
        lock.emplace(std::move(next));
      else if (!isKeeperRunning(folders) && said != next.reason())
        fail(context, said = next.reason());
    }
  }
}

} // namespace

Command runCommand() {
  return writing({"run",
                  "Measure, record and alert without an interface, until interrupted",
                  {{"--take-over", Option::Kind::flag,
                    "Ask a keeper that runs to step back; it comes back when this one ends"}},
                  runKeeper});
}

} // namespace korvell
