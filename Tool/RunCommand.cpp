// korvell run: the keeper without an interface. Measures, records, alerts and answers until it is told to
// end.

#include "App/Assembly.h"
#include "App/Keeper.h"
#include "App/KeeperLock.h"
#include "App/SettingsCheck.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/HeadlessLoop.h"

namespace korvell {

namespace {

/// Said when it changes, not every minute.
void sayProblem(Context& context, const std::optional<HistoryProblem>& problem) {
  context.err.line("korvell: " + (problem ? localized("Nothing is recorded: {reason}",
                                                      {{"reason", escapedControls(problem->detail)}})
                                          : localized("The history is recorded again.")));
  context.err.flush();
}

int runKeeper(Context& context, const Arguments&) {
  const auto lock = KeeperLock::acquire(context.host.folders);
  if (!lock) return fail(context, lock.reason());

  Assembly assembly(context.host, context.clock);
  if (const auto& open = context.host.openWatch)
    context.host.notifications->setOpenHandler([open](const std::string&) { open(); });
  HeadlessLoop loop;
  const FixedAttention unwatched(false);
  const auto model = assembly.makeKeepingModel(loop.main(), unwatched);
  const auto problems = model->historyProblem.observe(
      [&context](const std::optional<HistoryProblem>& problem) { sayProblem(context, problem); });
  Keeper keeper(loop.main(), *model);
  const SettingsWatch settings(loop.main(), *context.host.defaults, [&context](const std::string& trouble) {
    context.err.line("korvell: " + escapedControls(trouble));
    context.err.flush();
  });

  const auto socket = keeperSocketPath(context.host.folders);
  const auto spare = spareSocketPath(context.host.folders);
  if (keeper.listen(socket))
    lock->announce(socket);
  else if (keeper.listen(spare))
    lock->announce(spare);
  else
    context.err.line("korvell: " + localized("can't answer at {socket}; commands will measure by themselves",
                                             {{"socket", socket}}));
  context.out.line(localized("Korvell is measuring and recording. An interrupt (Ctrl-C) ends it."));
  context.out.flush();
  loop.run();
  const auto problem = model->finish();
  if (!problem) return exitOK;
  return fail(context, localized("The last minutes could not be recorded: {reason}",
                                 {{"reason", escapedControls(problem->detail)}}));
}

} // namespace

Command runCommand() {
  return writing({"run", "Measure, record and alert without an interface, until interrupted", {}, runKeeper});
}

} // namespace korvell
