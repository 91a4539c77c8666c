// korvell run: the keeper without an interface. Measures, records, alerts and answers until it is told to
// end.

#include "Agents/MetricsFile.h"
#include "App/Assembly.h"
#include "App/HandOver.h"
#include "App/Keeper.h"
#include "App/KeeperLock.h"
#include "App/KeeperTroubles.h"
#include "App/LastResort.h"
#include "App/SettingsCheck.h"
#include "Base/SystemQueue.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/HeadlessLoop.h"
#include "Tool/Version.h"

namespace korvell {

namespace {

void say(Context& context, std::string_view text) {
  context.out.line(text);
  context.out.flush();
}

/// Listens, and tells where; a keeper that can't answer keeps all the same.
void answerAt(const UserFolders& folders, Keeper& keeper, const KeeperLock& lock, KeeperTroubles& troubles) {
  const auto usual = keeperSocketPath(folders), spare = spareSocketPath(folders);
  for (const auto& socket : {usual, spare})
    if (keeper.listen(socket)) return lock.announce(socket);
  troubles.tellUnreachable(usual);
}

/// For a scan that is under way to end; longer than a clean-up's tool gets.
constexpr Seconds timeToEnd{5};

struct Kept {
  bool steppedBack = false; ///< for another keeper that asked, not because of a signal
  bool isLost = false;      ///< the last minutes could not be recorded
};

/// Keeps until a signal asks to end or another keeper takes over.
Kept keep(Context& context, HeadlessLoop& loop, const KeeperLock& lock) {
  std::optional<LastResort> lastResort; // outlives what may hang when it ends
  KeeperTroubles troubles(context.host.folders, context.clock, version, [&context](const std::string& text) {
    context.err.line("korvell: " + text);
    context.err.flush();
  });
  Assembly assembly(context.host, context.clock);
  const FixedAttention unwatched(false);
  const auto model = assembly.makeKeepingModel(loop.main(), unwatched, troubles.teller());
  troubles.follow(*model);
  const auto actions = assembly.makeActions(
      loop.main(), [&model]() -> AppModel& { return *model; }, assembly.lateStorageScanner(loop.main()));
  Keeper keeper(loop.main(), *model, *actions);
  const SettingsWatch settings(loop.main(), *context.host.defaults, troubles.teller());
  const MetricsFile metrics(loop.main(), *model, *context.host.defaults, systemQueueFactory(), version,
                            troubles.teller());
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
  answerAt(context.host.folders, keeper, lock, troubles);
  say(context, localized("Korvell is measuring and recording. An interrupt (Ctrl-C) ends it."));
  loop.run();
  const auto problem = model->finish();
  kept.isLost = problem.has_value();
  if (problem) troubles.tellLost(*problem);
  lastResort.emplace(timeToEnd, kept.isLost ? exitFailed : exitOK);
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
    if (!kept.steppedBack) return kept.isLost ? exitFailed : exitOK;
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
