#include "Tool/DoctorReport.h"

#include "App/Measurement.h"
#include "App/SettingsCheck.h"
#include "Base/Descriptor.h"
#include "Base/Format.h"
#include "Base/LocalTime.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Core/History/HistoryStore.h"
#include "Core/Storage/StorageHost.h"
#include "Platform/Posix/SystemIdentity.h"
#include "Tool/AskKeeper.h"
#include "Tool/SupportReport.h"
#include "Tool/Version.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fmt/format.h>
#include <unistd.h>

namespace korvell {

namespace {

namespace fs = std::filesystem;

std::string_view wordOf(const KeeperAnswer& state) {
  if (state.isSilent) return "runs and is silent";
  if (state.isStarting) return "is starting";
  return state ? "answers" : "none";
}

/// Of these files only: others may have telling names.
void addFiles(SupportReport& report, const UserFolders& folders) {
  for (const auto& path : {folders.data + "/" + std::string(HistoryStore::fileName),
                           AIUsageScanner::defaultCacheURL(folders), folders.data + "/alerts.json"}) {
    std::error_code error;
    const auto size = fs::file_size(path, error);
    report.fact(fs::path(path).filename().string(), error ? error.message() : Format::bytes(double(size)));
  }
}

void addKorvell(SupportReport& report, Context& context, const OwnCost& cost) {
  report.section("Korvell");
  report.fact("version", version);
  const auto state = keeperState(context, {"hasSample", "historyProblem"});
  report.fact("keeper", wordOf(state));
  HistoryStore reader(systemQueueFactory(), context.clock, context.host.folders.data, HistoryAccess::reader);
  const auto problem = state ? historyProblemOf(state) : reader.problem();
  report.fact("history", problem ? rawValue(problem->kind) : "fine");
  if (auto* helper = context.host.usageHelper.get()) report.fact("helper", rawValue(helper->status()));
  report.fact("one cycle", timeText(cost.cycleMicroseconds));
  report.fact("resident memory", Format::memory(double(cost.resident)));
  addFiles(report, context.host.folders);
}

void addMachine(SupportReport& report, MachineCounters& machine) {
  const auto facts = machine.facts();
  report.fact("processor", facts.chipName);
  report.fact("logical processors", std::to_string(facts.logicalProcessors));
  report.fact("graphics", facts.graphicsName);
  report.fact("memory", Format::memory(double(machine.memory().total)));
  report.fact("volumes", std::to_string(machine.volumes().size()));
  report.fact("network links", std::to_string(machine.interfaces().size()));
}

void addSystem(SupportReport& report, Context& context, const SystemIdentity& identity) {
  report.section("System");
  report.fact("release", identity.release);
  report.fact("kernel", identity.kernel);
  for (const auto* variable : {"XDG_CURRENT_DESKTOP", "XDG_SESSION_TYPE", "LANG", "TERM"})
    if (const auto value = context.environment(variable)) report.fact(variable, *value);
  if (context.host.machine) addMachine(report, *context.host.machine);
}

void addSettings(SupportReport& report, const UserDefaults& defaults) {
  report.section("Settings that are not at their default");
  for (const auto& [key, value] : namelessSettings(defaults)) report.fact(key, value);
  for (const auto& trouble : settingsTroubles(defaults)) report.fact("trouble", trouble.nameless);
}

void addErrors(SupportReport& report, const UserFolders& folders) {
  report.section("Last errors of the keeper");
  const auto errors = ErrorLog::read(folders.data);
  if (!errors) report.fact("log", "can't be read");
  for (const auto& error : errors.value_or(std::vector<LoggedError>{})) report.error(error);
}

std::vector<std::string> namesOf(const Context& context, std::vector<std::string> names) {
  for (const auto* variable : {"USER", "LOGNAME", "HOSTNAME"})
    if (auto name = context.environment(variable)) names.push_back(std::move(*name));
  names.push_back(fs::path(context.host.folders.home).filename().string());
  return names;
}

/// 0, or why the file was not made: EEXIST where there is one.
int createFile(const std::string& path, std::string_view bytes) {
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!file) return errno;
  while (!bytes.empty()) {
    const auto written = ::write(file.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written > 0) {
      bytes.remove_prefix(std::size_t(written));
      continue;
    }
    const int reason = errno;
    ::unlink(path.c_str()); // ours, and only half of it
    return reason;
  }
  return 0;
}

std::string usualPlace(const Context& context, int number) {
  std::error_code none;
  const auto downloads = context.host.fileTree ? downloadsFolder(context.host) : std::string();
  const auto folder = fs::is_directory(downloads, none) ? downloads : std::string(".");
  const auto day = dayText(localDay(*context.host.zone, context.clock.now()));
  return fmt::format("{}/korvell-report-{}{}.txt", folder, day,
                     number > 1 ? "-" + std::to_string(number) : "");
}

int told(Context& context, const std::string& path, int error) {
  if (error != 0)
    return fail(context, localized("The report could not be written to {path}: {reason}",
                                   {{"path", escapedControls(path)}, {"reason", std::strerror(error)}}));
  context.out.line(localized("The report is {path}. It names no project, file, host, application or person; "
                             "look through it before you hand it on.",
                             {{"path", escapedControls(path)}}));
  return exitOK;
}

} // namespace

std::string supportReport(Context& context, const std::vector<SourceReport>& sources, const OwnCost& cost) {
  const auto identity = systemIdentity();
  const auto kernelName = identity.kernel.substr(0, identity.kernel.find(' '));
  SupportReport report(context.clock.now(), namesOf(context, identity.names),
                       identity.release + " " + kernelName);
  addKorvell(report, context, cost);
  addSystem(report, context, identity);
  if (context.host.defaults) addSettings(report, *context.host.defaults);
  report.section("Sources of the figures");
  for (const auto& source : sources) report.source(source);
  addErrors(report, context.host.folders);
  return report.text();
}

int writeSupportReport(Context& context, std::string_view text, const std::optional<std::string>& file) {
  constexpr int mostOfADay = 99;
  if (file == "-") {
    context.out.write(text);
    return exitOK;
  }
  if (file) return told(context, *file, createFile(*file, text));
  for (int number = 1;; ++number) {
    const auto path = usualPlace(context, number);
    const int error = createFile(path, text);
    if (error != EEXIST || number == mostOfADay) return told(context, path, error);
  }
}

} // namespace korvell
