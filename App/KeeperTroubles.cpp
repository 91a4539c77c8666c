#include "App/KeeperTroubles.h"

#include "Base/SystemQueue.h"
#include "Base/Text.h"

namespace korvell {

namespace {

Trouble recordingTrouble(const std::optional<HistoryProblem>& problem) {
  if (!problem) return troubleOf("The history is recorded again.", {});
  return troubleOf("Nothing is recorded: {reason}", {{"reason", problem->detail}}, rawValue(problem->kind));
}

} // namespace

KeeperTroubles::KeeperTroubles(const UserFolders& folders, const Clock& clock, std::string version,
                               std::function<void(const std::string&)> say)
    : log_(systemQueueFactory(), clock, folders.data, std::move(version)), say_(std::move(say)) {}

void KeeperTroubles::tell(const Trouble& trouble) {
  say_(escapedControls(trouble.text));
  log_.add(trouble);
}

std::function<void(const Trouble&)> KeeperTroubles::teller() {
  return [watch = life_.watch()](const Trouble& trouble) {
    if (auto* troubles = watch.get()) troubles->tell(trouble);
  };
}

void KeeperTroubles::follow(AppModel& model) {
  problems_ = model.historyProblem.observe(
      [this](const std::optional<HistoryProblem>& problem) { tell(recordingTrouble(problem)); });
}

void KeeperTroubles::tellLost(const HistoryProblem& problem) {
  tell(troubleOf("The last minutes could not be recorded: {reason}", {{"reason", problem.detail}},
                 rawValue(problem.kind)));
}

void KeeperTroubles::tellUnreachable(const std::string& socket) {
  tell(troubleOf("can't answer at {socket}; commands will measure by themselves", {{"socket", socket}}));
}

} // namespace korvell
