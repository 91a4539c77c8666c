#pragma once
// The sources of every Linux adapter, and what this process uses, from /proc/self.

#include "Platform/Diagnostics.h"
#include "Platform/Linux/LinuxMachineCounters.h"
#include "Platform/Linux/ServiceManager.h"
#include "Platform/UsageHelper.h"

namespace korvell {

class LinuxDiagnostics final : public Diagnostics {
public:
  /// `helper` outlives it; null where there is none.
  explicit LinuxDiagnostics(const Clock& clock, BusAddresses buses, UsageHelperService* helper = nullptr,
                            LinuxMachineRoots machine = {});

  std::vector<SourceReport> sources() override;
  std::vector<SourceReport> figureSources() override;
  OwnUsage ownUsage() override;

private:
  const Clock& clock_;
  const BusAddresses buses_;
  UsageHelperService* const helper_;
  LinuxMachineRoots machine_;
};

} // namespace korvell
