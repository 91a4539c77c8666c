#pragma once
// What the acting tools do, through the running keeper, or, where there is none, by this process. Main queue
// only.
//
// By itself it makes a model for each request and ends it behind the answer: a server that waits measures
// nothing. Such a model and the reading tools would look at the same processes from two threads, so the
// tools' queue rests meanwhile.

#include "App/Actions.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"
#include "Platform/Host.h"

#include <functional>
#include <memory>

namespace korvell {

class AgentActions final : public Actions {
public:
  struct Services {
    Host& host;
    const Clock& clock;
    Queue& main;
    QueueFactory makeQueue;
    Seconds patience; ///< how long a keeper may think
  };
  /// The tools' queue is made when it is first needed, and ends after this object.
  AgentActions(Services services, std::function<Queue&()> tools);
  ~AgentActions() override;

  void describe(const ActionRequest& request, Described done) override;
  void perform(const ActionRequest& request, Performed done) override;

private:
  class Own;
  enum class Doer { keeper, silentKeeper, here };
  /// `then` with who does it, on the main queue; with `here` the tools' queue rests until end().
  void begin(std::function<void(Doer)> then);
  void end();
  Actions& keeper();

  Services services_;
  const std::function<Queue&()> tools_;
  std::unique_ptr<Actions> keeper_; ///< null until the first
  std::unique_ptr<Own> own_;        ///< null but for one request
  struct Rest;
  std::shared_ptr<Rest> rest_;
  Lifeline<AgentActions> life_{*this};
};

} // namespace korvell
