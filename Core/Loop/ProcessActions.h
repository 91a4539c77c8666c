#pragma once
// Ending processes on the user's word: development servers, applications, single processes.
//
// Lives on the sampler's queue, whose process table it shares; everything but the destructor is called there.
// Destroyed before the sampler; what is under way by then is left to itself.

#include "Core/DevServers/ServerStopper.h"
#include "Core/Loop/Sampler.h"
#include "Core/Machine/Quit.h"

#include <optional>
#include <vector>

namespace korvell {

class ProcessActions {
public:
  ProcessActions(Sampler& sampler, QuitServices services);
  ~ProcessActions();
  ProcessActions(const ProcessActions&) = delete;
  ProcessActions& operator=(const ProcessActions&) = delete;

  /// See ServerStopper. The next cycle looks for servers again.
  void stopServer(ProcessID pid, Date startedAt, ServerStopper::Done done);
  /// Who is to end when an application of the last cycle's is quit; see quitTargets().
  std::vector<QuitTarget> targets(const AppUsage& app, bool force, ProcessID self) const;
  /// See quitProcesses().
  QuitResult quit(const std::vector<QuitTarget>& targets, bool force);

private:
  Sampler& sampler_;
  QuitServices services_;
  std::optional<ServerStopper> stopper_;
};

} // namespace korvell
