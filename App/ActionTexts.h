#pragma once
// The words in which Korvell asks before it does something, and tells what became of it: one place for
// dialogs, terminals and programs. Names stand as they are told: whoever prints on a terminal escapes them.

#include "App/Actions.h"
#include "Base/Result.h"
#include "Core/DevServers/ServerStopper.h"
#include "Core/Machine/Models.h"
#include "Core/Startup/StartupItem.h"
#include "Core/Storage/PendingCleanup.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The one application or process of the snapshot that a person names: by its key, its name or a process id.
struct QuitChoice {
  AppUsage app; ///< of a single process: with that process only
  std::string name;
};
/// Fails when there is none, when there are several, or when it is the system itself.
Result<QuitChoice> chooseToQuit(const std::vector<AppUsage>& apps, std::string_view what);

/// `apps` has the names of the processes; those that it lacks are known by their ids.
ActionDescription describeQuit(const QuitRequest& request, const std::vector<AppUsage>& apps);
ActionAnswer answerOf(const QuitRequest& request, const QuitResult& result,
                      const std::vector<AppUsage>& apps);

ActionDescription describeStop(const DevServer& server);
/// Of those that are idle; harmless when none is.
ActionDescription describeStopIdle(const std::vector<DevServer>& idle);
ActionAnswer answerOf(const DevServer& server, StopOutcome outcome);
/// What became of each of the `stopped`, in their order; the `spared` were no longer idle.
ActionAnswer answerOf(const std::vector<DevServer>& stopped, std::span<const StopOutcome> outcomes,
                      const std::vector<DevServer>& spared);

ActionDescription describeRemoval(const StartupItem& item);
ActionAnswer answerOf(const StartupItem& item, const Outcome& removed);

/// `steps`: what is done to each path, and the commands that run.
ActionDescription describeCleanup(const PendingCleanup& pending, std::vector<std::string> steps);
/// The same as the commands print it: title, message, items, steps.
Value cleanupValue(const ActionDescription& asked);

} // namespace korvell
