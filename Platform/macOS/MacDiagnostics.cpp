#include "Platform/macOS/MacDiagnostics.h"

#include "Base/Localization.h"
#include "Base/macOS/CoreFoundation.h"
#include "Platform/Formats/ListeningPorts.h"
#include "Platform/Formats/ProcessTraffic.h"
#include "Platform/Posix/SourceExamination.h"
#include "Platform/macOS/MacPeripherals.h"
#include "Platform/macOS/MacProcessTable.h"
#include "Platform/macOS/MacTemperatures.h"
#include "Platform/macOS/Sysctl.h"

#include <IOKit/ps/IOPowerSources.h>

#include <ctime>
#include <libproc.h>
#include <unistd.h>

namespace korvell {

namespace {

using State = SourceReport::State;

constexpr const char* noAnswer = "The system does not answer.";
constexpr ProcessID launchd = 1; ///< runs always, and as root

struct SourceRow {
  const char* name;
  const char* source;
  const char* missing; ///< why a machine may not have it
  bool (*answers)(MacSources&);
  std::vector<KnownPart> parts = {}; ///< the figures that come from it
};

const SourceRow machineRows[] = {
    {"CPU",
     "host_processor_info",
     noAnswer,
     [](MacSources& s) { return !s.machine.cpu().cores.empty(); },
     {KnownPart::processor}},
    {"Load",
     "getloadavg",
     noAnswer,
     [](MacSources& s) { return s.machine.cpu().load1.has_value(); },
     {KnownPart::load}},
    {"Memory",
     "host_statistics64",
     noAnswer,
     [](MacSources& s) { return s.machine.memory().use.has_value(); },
     {KnownPart::memory}},
    {"Swap", "vm.swapusage", noAnswer,
     [](MacSources&) { return sysctlValue<xsw_usage>("vm.swapusage").has_value(); }},
    {"Memory pressure", "kern.memorystatus_vm_pressure_level", noAnswer,
     [](MacSources&) {
       return sysctlValue<std::int32_t>("kern.memorystatus_vm_pressure_level").has_value();
     }},
    {"Disks",
     "IOBlockStorageDriver",
     noAnswer,
     [](MacSources& s) { return !s.machine.disks().empty(); },
     {KnownPart::disks}},
    {"Volumes",
     "NSFileManager",
     noAnswer,
     [](MacSources& s) { return !s.machine.volumes().empty(); },
     {KnownPart::volumes}},
    {"Network",
     "NET_RT_IFLIST2",
     "This machine has no wired, wireless or cellular link.",
     [](MacSources& s) { return !s.machine.interfaces().empty(); },
     {KnownPart::network}},
    {"GPU",
     "IOAccelerator",
     "No graphics processor publishes how busy it is.",
     [](MacSources& s) { return !s.machine.gpus().empty(); },
     {KnownPart::graphics, KnownPart::graphicsMemory}},
    {"Battery",
     "AppleSmartBattery",
     "This machine has no battery.",
     [](MacSources& s) { return s.machine.power().battery.has_value(); },
     {KnownPart::battery, KnownPart::batteryHealth, KnownPart::batteryCycles, KnownPart::batteryTemperature,
      KnownPart::power}},
    {"Power adapter", "IOPSCopyExternalPowerAdapterDetails", "No power adapter tells what it can give.",
     [](MacSources&) { return bool(CFOwned<CFDictionaryRef>(IOPSCopyExternalPowerAdapterDetails())); }},
    {"Thermal state", "NSProcessInfo", noAnswer,
     [](MacSources& s) {
       s.state.thermalState(); // always answers: what counts is what it costs
       return true;
     }},
    {"Applications", "NSWorkspace", "No desktop session answers; applications are told by their paths alone.",
     [](MacSources& s) { return !s.applications.list().empty(); }},
};

SourceReport examined(const SourceRow& row, MacSources& sources, const Clock* clock) {
  SourceReport report{.name = localized(row.name), .source = row.source, .parts = row.parts};
  if (row.answers(sources)) {
    report.microseconds = readingMicroseconds(clock, [&] { row.answers(sources); });
  } else {
    report.state = State::missing;
    report.reason = localized(row.missing);
  }
  return report;
}

/// The listing and the figures of our own processes, without the bytes that nettop tells.
SourceReport processes(const Clock* clock) {
  SourceReport report{.name = localized("Processes"),
                      .source = "proc_pid_rusage",
                      .parts = {KnownPart::processes, KnownPart::processEnergy}};
  MacProcessTable table([](const auto&...) { return std::nullopt; });
  if (table.read().empty()) {
    report.state = State::missing;
    report.reason = localized(noAnswer);
  } else {
    report.microseconds = readingMicroseconds(clock, [&] { table.read(); });
  }
  return report;
}

SourceReport usageOfOthers(const Clock& clock) {
  SourceReport report{.name = localized("Usage of others"), .source = "proc_pid_rusage"};
  MacProcessTable table([](const auto&...) { return std::nullopt; });
  if (table.start(launchd)) {
    report.microseconds = readingMicroseconds(&clock, [&] { table.start(launchd); });
  } else {
    report.state = State::refused;
    report.reason = localized("The system does not tell you what other users' processes use.");
    report.remedy = localized("Enable the helper: korvell helper enable.");
  }
  return report;
}

SourceReport responsibleProcesses(const Clock& clock) {
  SourceReport report{.name = localized("Responsible processes"),
                      .source = "responsibility_get_pid_responsible_for_pid"};
  MacProcessTable table([](const auto&...) { return std::nullopt; });
  if (const auto own = table.facts(getpid()); own && own->responsible > 0) {
    report.microseconds = readingMicroseconds(&clock, [&] { table.facts(getpid()); });
  } else {
    report.state = State::missing;
    report.reason = localized("This system does not tell which application a process works for; its path "
                              "and its parents decide.");
  }
  return report;
}

/// A program that is started for each reading: measured once, since it takes its time.
SourceReport program(const char* name, const char* path, const CommandRunner& run, const Clock& clock,
                     const std::function<void(const CommandRunner&)>& reading) {
  SourceReport report{.name = localized(name), .source = path};
  bool answered = false;
  const auto begin = clock.monotonic();
  reading([&](const std::string& program, const std::vector<std::string>& arguments, Seconds timeout,
              const Cancellation& cancellation) {
    const auto result = run(program, arguments, timeout, cancellation);
    answered = result && !result->timedOut;
    return result;
  });
  if (answered) {
    report.microseconds = (clock.monotonic() - begin).count() * 1e6;
  } else {
    report.state = State::missing;
    report.reason = localized("The program can't be started, or does not answer in time.");
  }
  return report;
}

SourceReport temperatureEvents(const Clock& clock) {
  SourceReport report{.name = localized("Temperatures"), .source = "IOHIDEventSystemClient"};
  const auto events = openMacTemperatureEvents();
  const auto count = events ? events->products().size() : 0;
  if (count == 0) {
    report.state = State::missing;
    report.reason = localized("The event system has no temperature sensor; the controller is asked instead.");
    return report;
  }
  report.microseconds = readingMicroseconds(&clock, [&] {
    for (std::size_t i = 0; i < count; ++i) events->celsius(i);
  });
  return report;
}

SourceReport controller(const Clock& clock) {
  SourceReport report{.name = localized("Fans"), .source = "AppleSMC"};
  const auto transport = openMacController();
  if (!transport) {
    report.state = State::missing;
    report.reason = localized("This machine has no controller of that kind, or it does not open.");
    return report;
  }
  report.microseconds = readingMicroseconds(&clock, [&] {
    ControllerTransport::Record reply{};
    transport->exchange({}, reply); // one call; a value takes two
  });
  return report;
}

SourceReport peripherals(const Clock& clock) {
  SourceReport report{.name = localized("Peripheral batteries"), .source = "IOHIDDevice"};
  report.microseconds = readingMicroseconds(&clock, [] { registryPeripherals(); });
  return report;
}

SourceReport launchJobs(LaunchItems& items, const Clock& clock) {
  SourceReport report{.name = localized("Launch jobs"), .source = "/bin/launchctl"};
  const auto begin = clock.monotonic();
  report.reason = items.loadedJobs().user.silence;
  if (report.reason.empty()) {
    report.microseconds = (clock.monotonic() - begin).count() * 1e6;
    report.reason = localized("Only your own jobs are listed; a daemon is never shown as loaded.");
  } else {
    report.state = State::missing;
  }
  return report;
}

} // namespace

std::vector<SourceReport> MacDiagnostics::sources() {
  std::vector<SourceReport> reports;
  for (const auto& row : machineRows) reports.push_back(examined(row, sources_, &clock_));
  reports.push_back(processes(&clock_));
  reports.push_back(usageOfOthers(clock_));
  reports.push_back(responsibleProcesses(clock_));
  auto traffic = program("Traffic", "/usr/bin/nettop", sources_.run, clock_,
                         [](const CommandRunner& run) { readProcessTraffic(run); });
  traffic.parts = {KnownPart::processTraffic};
  reports.push_back(std::move(traffic));
  reports.push_back(program("Listening ports", "/usr/sbin/lsof", sources_.run, clock_,
                            [](const CommandRunner& run) { readListeningPorts(run); }));
  reports.push_back(launchJobs(sources_.launchItems, clock_));
  reports.push_back(temperatureEvents(clock_));
  reports.push_back(controller(clock_));
  reports.push_back(peripherals(clock_));
  reports.push_back(program("Peripheral batteries", "/usr/sbin/system_profiler", sources_.run, clock_,
                            [](const CommandRunner& run) { profiledPeripherals(run); }));
  return reports;
}

// Without the traffic of processes: nettop takes longer than people wait for a status.
std::vector<SourceReport> MacDiagnostics::figureSources() {
  std::vector<SourceReport> reports;
  for (const auto& row : machineRows)
    if (!row.parts.empty()) reports.push_back(examined(row, sources_, nullptr));
  reports.push_back(processes(nullptr));
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
