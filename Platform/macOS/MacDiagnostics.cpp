#include "Platform/macOS/MacDiagnostics.h"

#include "Base/Localization.h"

#include <ctime>
#include <libproc.h>
#include <unistd.h>

namespace korvell {

namespace {

struct SourceRow {
  const char* name;
  const char* source;
  const char* missing; ///< why a machine may not have it
  bool (*answers)(MachineCounters&);
};

constexpr const char* noAnswer = "The system does not answer.";

constexpr SourceRow rows[] = {
    {"Processor", "host_processor_info", noAnswer, [](MachineCounters& m) { return !m.cpu().cores.empty(); }},
    {"Load", "getloadavg", noAnswer, [](MachineCounters& m) { return m.cpu().load1.has_value(); }},
    {"Memory", "host_statistics64", noAnswer, [](MachineCounters& m) { return m.memory().use.has_value(); }},
    {"Disks", "IOBlockStorageDriver", noAnswer, [](MachineCounters& m) { return !m.disks().empty(); }},
    {"Volumes", "NSFileManager", noAnswer, [](MachineCounters& m) { return !m.volumes().empty(); }},
    {"Network", "NET_RT_IFLIST2", "This machine has no wired, wireless or cellular link.",
     [](MachineCounters& m) { return !m.interfaces().empty(); }},
    {"Graphics", "IOAccelerator", "No graphics processor publishes how busy it is.",
     [](MachineCounters& m) { return !m.gpus().empty(); }},
    {"Battery", "AppleSmartBattery", "This machine has no battery.",
     [](MachineCounters& m) { return m.power().battery.has_value(); }},
};

} // namespace

std::vector<SourceReport> MacDiagnostics::sources() {
  std::vector<SourceReport> reports;
  for (const auto& row : rows) {
    SourceReport report{.name = localized(row.name), .source = row.source};
    row.answers(machine_); // the first reading opens what later ones keep
    const auto begin = clock_.monotonic();
    if (row.answers(machine_)) {
      report.microseconds = (clock_.monotonic() - begin).count() * 1e6;
    } else {
      report.state = SourceReport::State::missing;
      report.reason = localized(row.missing);
    }
    reports.push_back(std::move(report));
  }
  return reports;
}

OwnUsage MacDiagnostics::ownUsage() {
  OwnUsage usage;
  timespec time{};
  if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0)
    usage.cpuSeconds = double(time.tv_sec) + double(time.tv_nsec) / 1e9;
  rusage_info_v6 info{};
  if (proc_pid_rusage(getpid(), RUSAGE_INFO_V6, reinterpret_cast<rusage_info_t*>(&info)) == 0)
    usage.resident = info.ri_resident_size;
  return usage;
}

} // namespace korvell
