#include "Platform/Linux/LinuxDiagnostics.h"

#include "Platform/Formats/TextScanner.h"
#include "Platform/Linux/LinuxProcessTable.h"
#include "Platform/Linux/MachineSources.h"
#include "Platform/Linux/ProcessSources.h"
#include "Platform/Linux/SensorSources.h"
#include "Platform/Posix/SourceExamination.h"

#include <atomic>
#include <ctime>
#include <unistd.h>

namespace korvell {

namespace {

constexpr Seconds managerPatience{1}, helperPatience{1};

SourceReport services(std::string name, const std::string& bus, const Clock* clock) {
  SourceReport report{.name = std::move(name), .source = bus};
  report.reason = askServiceManager(bus, managerPatience).silence;
  if (report.reason.empty())
    report.microseconds = readingMicroseconds(clock, [&] { askServiceManager(bus, managerPatience); });
  else
    report.state = SourceReport::State::missing;
  return report;
}

/// Asked about a process that there always is: that a socket exists does not say that somebody answers.
bool answers(UsageHelperService* helper) {
  if (!helper || helper->status() != UsageHelperStatus::enabled) return false;
  const auto told = std::make_shared<std::atomic<bool>>(false); // an answer may come late
  const auto connection = helper->connect([] {});
  if (!connection) return false;
  constexpr ProcessID first[] = {1};
  connection->request(first, [told](const UsageHelperAnswer& answer) { *told = answer.has_value(); });
  connection->await(helperPatience);
  return *told;
}

} // namespace

LinuxDiagnostics::LinuxDiagnostics(const Clock& clock, BusAddresses buses, UsageHelperService* helper,
                                   LinuxMachineRoots machine)
    : clock_(clock), buses_(std::move(buses)), helper_(helper), machine_(std::move(machine)) {}

std::vector<SourceReport> LinuxDiagnostics::sources() {
  auto reports = machineSources(machine_, &clock_);
  LinuxProcessTable table(LinuxProcessTable::systemSources());
  NetlinkSockets sockets;
  const ProcessSourceRoots roots{machine_.proc, &table, &sockets, ::geteuid(),
                                 [this] { return answers(helper_); }};
  for (auto& report : processSources(roots, &clock_)) reports.push_back(std::move(report));
  const LinuxSensorRoots sensors{machine_.proc, machine_.sys, machine_.nvidiaLibrary};
  for (auto& report : sensorSources(sensors, buses_.system, clock_)) reports.push_back(std::move(report));
  reports.push_back(services(localized("Your services"), buses_.session, &clock_));
  reports.push_back(services(localized("The system's services"), buses_.system, &clock_));
  return reports;
}

std::vector<SourceReport> LinuxDiagnostics::figureSources() {
  auto reports = machineSources(machine_, nullptr);
  NetlinkSockets sockets;
  for (auto& report : processSources({machine_.proc, nullptr, &sockets, ::geteuid()}, nullptr))
    reports.push_back(std::move(report));
  std::erase_if(reports, [](const SourceReport& report) { return report.parts.empty(); });
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
