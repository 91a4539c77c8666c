#pragma once
// Asks the person through the running application, which shows a question of its own words on its screen. One
// bounded request to the keeper and one queue for each question. Main queue only.

#include "App/ActionRequest.h"
#include "App/Consent.h"
#include "Base/Date.h"
#include "Base/Queue.h"
#include "Base/UserFolders.h"

#include <functional>
#include <memory>

namespace korvell {

class KeeperConsent {
public:
  struct Services {
    Queue& main;
    QueueFactory makeQueue;
    UserFolders folders;
    Seconds silence; ///< how long a keeper may think before it counts as silent
  };
  explicit KeeperConsent(Services services) : services_(std::move(services)) {}

  /// `answered` is called once, later, as long as what is handed back is kept: then the question goes.
  /// Consent::impossible where no application runs, or one that has no screen; a keeper that ends while it
  /// asks leaves the question unanswered.
  std::shared_ptr<void> ask(const ActionRequest& request, std::function<void(Consent)> answered) const;

private:
  Services services_;
};

} // namespace korvell
