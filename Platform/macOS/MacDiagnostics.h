#pragma once
// Which of the machine's sources answer, tried one by one.

#include "Platform/Diagnostics.h"
#include "Platform/MachineCounters.h"

namespace korvell {

class MacDiagnostics final : public Diagnostics {
public:
  /// Both outlive it.
  MacDiagnostics(MachineCounters& machine, const Clock& clock) : machine_(machine), clock_(clock) {}

  std::vector<SourceReport> sources() override;
  OwnUsage ownUsage() override;

private:
  MachineCounters& machine_;
  const Clock& clock_;
};

} // namespace korvell
