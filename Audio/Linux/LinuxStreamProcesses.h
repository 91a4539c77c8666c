#pragma once
// Single processes from /proc, on the mixer's queue: beside the sampler's table, which is another thread's.

#include "Audio/StreamOwners.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/ProcDirectory.h"

namespace korvell {

class LinuxStreamProcesses final : public StreamProcesses {
public:
  explicit LinuxStreamProcesses(LinuxProcessTable::Sources sources)
      : proc_(sources.proc), table_(std::move(sources)) {}

  std::optional<ProcessFacts> facts(ProcessID pid) override { return table_.facts(pid); }
  ProcessID parent(ProcessID pid) override;
  std::vector<ProcessID> insiders(ProcessID inner) override;

private:
  ProcDirectory proc_;
  LinuxProcessTable table_;
};

} // namespace korvell
