#pragma once
// What goes wrong while the keeper keeps: told at once, on standard error, and logged for a support report.
// Main queue only; outlives the model that it follows.

#include "App/AppModel.h"
#include "App/ErrorLog.h"
#include "Base/Lifeline.h"

#include <functional>
#include <string>

namespace korvell {

class KeeperTroubles {
public:
  /// `say` takes a localised sentence, control characters escaped. `folders` and `clock` outlive it.
  KeeperTroubles(const UserFolders& folders, const Clock& clock, std::string version,
                 std::function<void(const std::string&)> say);

  void tell(const Trouble& trouble);
  /// Does so on the main queue, and nothing once this is gone.
  std::function<void(const Trouble&)> teller();
  /// That nothing is recorded, and that it is again, when it changes.
  void follow(AppModel& model);
  /// What was measured since it was written last is lost: the keeper ends.
  void tellLost(const HistoryProblem& problem);
  void tellUnreachable(const std::string& socket);

private:
  ErrorLog log_;
  const std::function<void(const std::string&)> say_;
  Subscription problems_;
  Lifeline<KeeperTroubles> life_{*this};
};

} // namespace korvell
