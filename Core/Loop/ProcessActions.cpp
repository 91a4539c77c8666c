#include "Core/Loop/ProcessActions.h"

namespace korvell {

ProcessActions::ProcessActions(Sampler& sampler, QuitServices services)
    : sampler_(sampler), services_(services) {
  stopper_.emplace(sampler.queue(), services.table, services.control);
}

// The stopper's timers end on their queue.
ProcessActions::~ProcessActions() {
  sampler_.queue().sync([this] { stopper_.reset(); });
}

void ProcessActions::stopServer(ProcessID pid, Date startedAt, ServerStopper::Done done) {
  stopper_->stop(pid, startedAt, [this, done = std::move(done)](StopOutcome outcome) {
    sampler_.runSoon(SlowPart::devServers);
    done(outcome);
  });
}

std::vector<QuitTarget> ProcessActions::targets(const AppUsage& app, bool force, ProcessID self) const {
  return quitTargets(app, startTimes(app, sampler_.processes()), force, self);
}

QuitResult ProcessActions::quit(const std::vector<QuitTarget>& targets, bool force) {
  return quitProcesses(targets, force, services_);
}

} // namespace korvell
