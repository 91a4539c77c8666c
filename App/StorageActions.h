#pragma once
// The storage half of ModelActions: scanning, and cleaning what was found. Main queue only; what looks at the
// disk before a clean-up does so on a queue of its own, so that a question need not wait for a clean-up that
// is under way.

#include "App/Actions.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Core/Storage/PendingCleanup.h"
#include "Core/Storage/StorageScanner.h"

#include <functional>
#include <memory>

namespace korvell {

class StorageActions {
public:
  /// The scanner is made by the first call that needs it, and outlives this object.
  StorageActions(Queue& main, std::function<StorageScanner&()> scanner, QueueFactory makeQueue)
      : main_(main), scanner_(std::move(scanner)), makeQueue_(std::move(makeQueue)) {}

  void describe(const ScanStorageRequest& request, const Actions::Described& done);
  void perform(const ScanStorageRequest& request, Actions::Performed done);
  void describe(const CleanStorageRequest& request, Actions::Described done);
  void perform(const CleanStorageRequest& request, Actions::Performed done);

private:
  struct Question {
    PendingCleanup pending;
    Date scanned; ///< the result that they are of
    ActionDescription description;
  };
  void ask(const CleanStorageRequest& request, std::function<void(const Result<Question>&)> done);
  void clean(const PendingCleanup& pending, const ActionDescription& asked, Actions::Performed done);

  Queue& main_;
  const std::function<StorageScanner&()> scanner_;
  const QueueFactory makeQueue_;
  Lifeline<StorageActions> life_{*this};
  std::unique_ptr<Queue> questions_; ///< null until the first
};

} // namespace korvell
