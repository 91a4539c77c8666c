#include "Platform/Linux/LinuxDiagnostics.h"

#include "Platform/Formats/TextScanner.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/MachineSources.h"
#include "Platform/Linux/ProcessSources.h"

#include <ctime>
#include <unistd.h>

namespace korvell {

LinuxDiagnostics::LinuxDiagnostics(const Clock& clock, LinuxMachineRoots machine)
    : clock_(clock), machine_(std::move(machine)) {}

std::vector<SourceReport> LinuxDiagnostics::sources() {
  auto reports = machineSources(machine_, clock_);
  LinuxProcessTable table(LinuxProcessTable::systemSources());
  NetlinkSockets sockets;
  for (auto& report : processSources({machine_.proc, &table, &sockets, ::geteuid()}, clock_))
    reports.push_back(std::move(report));
  return reports;
}

OwnUsage LinuxDiagnostics::ownUsage() {
  OwnUsage usage;
  timespec time{};
  if (::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0)
    usage.cpuSeconds = double(time.tv_sec) + double(time.tv_nsec) / 1e9;
  FileReader reader;
  if (const auto text = reader.read(machine_.proc + "/self/statm")) {
    TextScanner scanner(*text);
    scanner.word(); // the address space
    usage.resident = scanner.number() * std::uint64_t(::sysconf(_SC_PAGESIZE));
  }
  return usage;
}

} // namespace korvell
