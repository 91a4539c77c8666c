#pragma once
// Signals through process descriptors (pidfd): once opened, a descriptor never means another process, so a
// start time compared after opening can't be outdated when the signal is sent. From any thread.

#include "Platform/ProcessTable.h"

#include <string>

namespace korvell {

class LinuxProcessControl final : public ProcessControl {
public:
  explicit LinuxProcessControl(std::string proc = "/proc") : proc_(std::move(proc)) {}
  SignalOutcome send(ProcessID pid, std::uint64_t start, ProcessSignal signal) override;

private:
  std::string proc_;
};

} // namespace korvell
