#pragma once
// Processes on macOS, by libproc. What a process has used may be read of this user's own processes only; of
// the others the parent, the command name and the path. Bytes on the network come from nettop, listening
// ports from lsof, each started for one listing.

#include "Base/Shell.h"
#include "Platform/ProcessTable.h"

#include <vector>

namespace korvell {

class MacProcessTable final : public ProcessTable {
public:
  explicit MacProcessTable(CommandRunner run);

  const std::vector<ProcessCounters>& read() override;
  std::optional<ProcessFacts> facts(ProcessID pid) override;
  std::optional<std::uint64_t> start(ProcessID pid) override;
  std::optional<Date> startDate(ProcessID pid) override;
  std::optional<std::string> workingDirectory(ProcessID pid) override;
  PortsByPID listeningPorts() override;
  std::optional<bool> isListenedOn(int port) override;
  Timebase timebase() const override { return timebase_; }
  bool energyIsEstimate() const override { return false; }
  bool tellsEnergy() const override { return true; }

private:
  using ResponsibleProcess = ProcessID (*)(ProcessID);

  CommandRunner run_;
  Timebase timebase_;
  ResponsibleProcess responsible_; ///< null when the system has no such function
  std::vector<ProcessCounters> processes_;
};

class MacProcessControl final : public ProcessControl {
public:
  /// macOS has no handle on a process: between the look at its start time and the signal stand a few
  /// microseconds in which it may end, but its id is not given out again so soon.
  SignalOutcome send(ProcessID pid, std::uint64_t start, ProcessSignal signal) override;
};

} // namespace korvell
