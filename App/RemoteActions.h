#pragma once
// Has a running keeper do what is asked for, one request after the other. A queue of its own waits for the
// answers; ending this object ends the wait, not what the keeper does.

#include "App/Actions.h"
#include "Base/Date.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Base/UserFolders.h"

#include <memory>

namespace korvell {

class RemoteActions final : public Actions {
public:
  /// `silence`: how long a keeper may think about anything before it counts as silent. It is sent no order
  /// then that it might carry out later.
  RemoteActions(Queue& main, const QueueFactory& makeQueue, UserFolders folders, Seconds silence);
  ~RemoteActions() override;

  void describe(const ActionRequest& request, Described done) override;
  void perform(const ActionRequest& request, Performed done) override;

private:
  class Line;
  void ask(Value request, Seconds patience, std::function<void(const Result<Value>&, bool begun)> done);

  Queue& main_;
  std::shared_ptr<Line> line_;
  Lifeline<RemoteActions> life_{*this};
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell
