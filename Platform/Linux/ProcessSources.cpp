#include "Platform/Linux/ProcessSources.h"

#include "Platform/Linux/FileReader.h"
#include "Platform/Posix/SourceExamination.h"

#include <algorithm>
#include <cctype>
#include <sys/stat.h>
#include <unistd.h>

namespace korvell {

namespace {

using State = SourceReport::State;

SourceReport processes(const ProcessSourceRoots& roots, const Clock* clock) {
  SourceReport report{
      .name = localized("Processes"), .source = roots.proc + "/*/stat", .parts = {KnownPart::processes}};
  report.state = fileState(roots.proc + "/1/stat");
  if (report.state == State::readable) {
    if (roots.table && !roots.table->read().empty())
      report.microseconds = readingMicroseconds(clock, [&] { roots.table->read(); });
    return report;
  }
  report.state = State::refused;
  report.reason = localized("The system hides other users' processes (hidepid).");
  report.remedy =
      localized("An administrator can put you into the group that the option gid of /proc names, or mount "
                "/proc without hidepid.");
  return report;
}

bool isProcess(const std::string& name) {
  return std::ranges::all_of(name, [](unsigned char c) { return std::isdigit(c); });
}

/// A path of another user's process that can be read; nothing when there are such processes and none lets
/// itself be read. Without any other's process one of our own stands in.
std::optional<std::string> readableOfOthers(const ProcessSourceRoots& roots, const char* file,
                                            const std::function<bool(const std::string&)>& isReadable) {
  std::optional<std::string> own;
  bool anyOther = false;
  for (const auto& name : folderNames(roots.proc)) {
    struct stat owner {};
    if (!isProcess(name) || ::stat((roots.proc + "/" + name).c_str(), &owner) != 0) continue;
    const bool other = roots.user == 0 ? name != std::to_string(::getpid()) : owner.st_uid != roots.user;
    auto path = roots.proc + "/" + name + file;
    if (!isReadable(path)) {
      anyOther |= other;
      continue;
    }
    if (other) return path;
    own = std::move(path);
  }
  return anyOther ? std::nullopt : own;
}

SourceReport storage(const ProcessSourceRoots& roots, const Clock* clock) {
  SourceReport report{.name = localized("Storage of others"), .source = roots.proc + "/*/io"};
  const auto path =
      readableOfOthers(roots, "/io", [](const std::string& io) { return fileState(io) == State::readable; });
  if (path) {
    FileReader reader;
    report.microseconds = readingMicroseconds(clock, [&] { reader.read(*path); });
    return report;
  }
  if (roots.helperAnswers && roots.helperAnswers()) {
    report.source = localized("the helper");
    report.reason = localized("The system hides it from you; the helper tells it.");
    return report;
  }
  report.state = State::refused;
  report.reason = localized("The system does not tell you what other users' processes read and write.");
  report.remedy = localized("Enable the helper: korvell helper enable.");
  return report;
}

SourceReport openFiles(const ProcessSourceRoots& roots, const Clock* clock) {
  SourceReport report{.name = localized("Ports of others"), .source = roots.proc + "/*/fd"};
  const auto path =
      readableOfOthers(roots, "/fd", [](const std::string& folder) { return !folderNames(folder).empty(); });
  if (path) {
    report.microseconds = readingMicroseconds(clock, [&] { folderNames(*path); });
    return report;
  }
  report.state = State::refused;
  report.reason = localized("The system does not tell you which ports and connections belong to other users' "
                            "processes.");
  report.remedy = localized("Run as root where it matters; the figures of your own processes are complete.");
  return report;
}

SourceReport traffic(const ProcessSourceRoots& roots, const Clock* clock) {
  SourceReport report{
      .name = localized("Traffic"), .source = "sock_diag", .parts = {KnownPart::processTraffic}};
  std::vector<SocketRecord> records;
  const auto dump = [&] {
    records.clear();
    return roots.sockets && roots.sockets->dump(records);
  };
  if (dump()) {
    report.microseconds = readingMicroseconds(clock, dump);
    report.reason = localized("Counts TCP only: the kernel keeps no byte counts of UDP sockets.");
    return report;
  }
  report.state = State::missing;
  report.reason = localized("The kernel does not tell what sockets received and sent.");
  report.remedy = localized("Load its module as root: modprobe inet_diag tcp_diag.");
  return report;
}

} // namespace

std::vector<SourceReport> processSources(const ProcessSourceRoots& roots, const Clock* clock) {
  return {processes(roots, clock), storage(roots, clock), openFiles(roots, clock), traffic(roots, clock)};
}

} // namespace korvell
