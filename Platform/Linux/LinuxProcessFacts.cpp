// What is read of a process once, when it is identified.

#include "Platform/Formats/ProcessFiles.h"
#include "Platform/Formats/ProcessName.h"
#include "Platform/Linux/LinuxProcessTable.h"

namespace korvell {

namespace {

using Access = ProcDirectory::Access;

/// A launcher moves what it started into a scope of its own within this time.
constexpr Seconds youth{2};

std::string withoutDeletedMark(std::string_view path) {
  constexpr std::string_view mark = " (deleted)";
  if (path.ends_with(mark)) path.remove_suffix(mark.size());
  return std::string(path);
}

void takeEnvironment(std::string_view environment, ProcessFacts& facts) {
  facts.desktopFile = environmentValue(environment, "GIO_LAUNCHED_DESKTOP_FILE").value_or("");
  facts.appImage = environmentValue(environment, "APPIMAGE").value_or("");
  if (const auto launched = environmentValue(environment, "GIO_LAUNCHED_DESKTOP_FILE_PID"))
    facts.launchedPID = parseInteger<ProcessID>(*launched).value_or(0);
}

} // namespace

std::optional<ProcessFacts> LinuxProcessTable::facts(ProcessID pid) {
  const auto file = proc_.read(pid, "stat");
  if (file.access == Access::gone) return std::nullopt;
  ProcessFacts facts;
  facts.name = "pid " + std::to_string(pid);
  const auto stat = parseProcessStat(file.text);
  if (!stat) {
    // Mounted with hidepid, /proc still tells whose a process is.
    facts.user = proc_.owner(pid).value_or(facts.user);
    return facts;
  }
  const std::string comm(stat->comm);
  const Seconds started{static_cast<double>(stat->start) / static_cast<double>(sources_.ticksPerSecond)};
  facts.kernelThread = stat->kernelThread;
  facts.settled = facts.kernelThread || sources_.sinceBoot() - started > youth;
  if (facts.kernelThread) {
    facts.name = stableKernelThreadName(comm);
    return facts;
  }
  facts.path = withoutDeletedMark(proc_.readLink(pid, "exe").text);
  facts.name = processName(facts.path, proc_.read(pid, "cmdline").text, comm);
  facts.controlGroup = controlGroup(proc_.read(pid, "cgroup").text);
  if (const auto status = parseProcessStatus(proc_.read(pid, "status").text))
    facts.user = status->effectiveUser;
  // The environment of others is closed to us; of our own it costs 7 µs.
  if (facts.user == sources_.user || sources_.user == 0)
    takeEnvironment(proc_.read(pid, "environ").text, facts);
  return facts;
}

std::optional<std::uint64_t> LinuxProcessTable::start(ProcessID pid) {
  const auto stat = parseProcessStat(proc_.read(pid, "stat").text);
  return stat ? std::optional(stat->start) : std::nullopt;
}

std::optional<Date> LinuxProcessTable::startDate(ProcessID pid) {
  const auto ticks = start(pid);
  if (!ticks) return std::nullopt;
  return sources_.bootTime +
         Seconds{static_cast<double>(*ticks) / static_cast<double>(sources_.ticksPerSecond)};
}

std::optional<std::string> LinuxProcessTable::workingDirectory(ProcessID pid) {
  const auto link = proc_.readLink(pid, "cwd");
  if (link.access != Access::ok) return std::nullopt;
  return withoutDeletedMark(link.text);
}

} // namespace korvell
