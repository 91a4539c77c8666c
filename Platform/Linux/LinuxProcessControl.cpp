#include "Platform/Linux/LinuxProcessControl.h"

#include "Platform/Formats/ProcessFiles.h"
#include "Platform/Linux/ProcDirectory.h"

#include <cerrno>
#include <csignal>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvell {

SignalOutcome LinuxProcessControl::send(ProcessID pid, std::uint64_t start, ProcessSignal signal) {
  if (pid < 2) return SignalOutcome::denied; // 0 and less mean groups of processes, 1 keeps the machine up
  const Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  if (!process) return errno == ESRCH ? SignalOutcome::gone : SignalOutcome::denied;
  ProcDirectory proc(proc_);
  const auto stat = parseProcessStat(proc.read(pid, "stat").text);
  if (!stat || stat->start != start || stat->state == 'Z') return SignalOutcome::gone;
  const int number = signal == ProcessSignal::kill ? SIGKILL : SIGTERM;
  if (syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0) == 0) return SignalOutcome::sent;
  return errno == ESRCH ? SignalOutcome::gone : SignalOutcome::denied;
}

} // namespace korvell
