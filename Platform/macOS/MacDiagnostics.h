#pragma once
// Which of the sources answer, tried one by one: the machine's counters, the processes, and the programs that
// are asked for what the system tells no other way.

#include "Base/Shell.h"
#include "Platform/Diagnostics.h"
#include "Platform/LaunchItems.h"
#include "Platform/MachineCounters.h"
#include "Platform/MachineState.h"
#include "Platform/ProcessTable.h"

namespace korvell {

/// What is examined; the references outlive the diagnostics.
struct MacSources {
  MachineCounters& machine;
  const MachineState& state;
  RunningApplications& applications;
  LaunchItems& launchItems;
  CommandRunner run; ///< starts nettop and lsof
};

class MacDiagnostics final : public Diagnostics {
public:
  MacDiagnostics(MacSources sources, const Clock& clock) : sources_(std::move(sources)), clock_(clock) {}

  std::vector<SourceReport> sources() override;
  std::vector<SourceReport> figureSources() override;
  OwnUsage ownUsage() override;

private:
  MacSources sources_;
  const Clock& clock_;
};

} // namespace korvell
