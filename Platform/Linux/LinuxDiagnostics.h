#pragma once
// The sources of every Linux adapter, and what this process uses, from /proc/self.

#include "Platform/Diagnostics.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Platform/Linux/ServiceManager.h"

namespace korvell {

class LinuxDiagnostics final : public Diagnostics {
public:
  explicit LinuxDiagnostics(const Clock& clock, BusAddresses buses, LinuxMachineRoots machine = {});

  std::vector<SourceReport> sources() override;
  OwnUsage ownUsage() override;

private:
  const Clock& clock_;
  const BusAddresses buses_;
  LinuxMachineRoots machine_;
};

} // namespace korvell
