#include "Platform/macOS/MacProcessTable.h"

#include "Platform/Formats/ListeningPorts.h"
#include "Platform/Formats/ProcessTraffic.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <dlfcn.h>
#include <libproc.h>
#include <mach/mach_time.h>
#include <sys/proc_info.h>
#include <sys/resource.h>
#include <utility>

namespace korvell {

namespace {

Timebase machTimebase() {
  mach_timebase_info_data_t info{};
  if (mach_timebase_info(&info) != KERN_SUCCESS || info.denom == 0) return {};
  return {.numer = info.numer, .denom = info.denom};
}

std::vector<ProcessID> processIDs() {
  constexpr int spare = 64; // processes that begin between the two calls
  const int estimate = proc_listallpids(nullptr, 0);
  if (estimate <= 0) return {};
  std::vector<ProcessID> pids(size_t(estimate + spare));
  const int count = proc_listallpids(pids.data(), int(pids.size() * sizeof(ProcessID)));
  pids.resize(size_t(std::clamp(count, 0, int(pids.size()))));
  std::erase_if(pids, [](ProcessID pid) { return pid < 1; });
  std::sort(pids.begin(), pids.end());
  return pids;
}

/// One of proc_pidinfo's records; nothing when it can't be read as a whole.
template <class Record>
std::optional<Record> processInfo(ProcessID pid, int flavour) {
  Record record{};
  if (proc_pidinfo(pid, flavour, 0, &record, sizeof record) != int(sizeof record)) return std::nullopt;
  return record;
}

std::optional<rusage_info_v6> usage(ProcessID pid) {
  rusage_info_v6 info{};
  if (proc_pid_rusage(pid, RUSAGE_INFO_V6, reinterpret_cast<rusage_info_t*>(&info)) != 0) return std::nullopt;
  return info;
}

std::string boundedText(const char* text, size_t room) { return {text, strnlen(text, room)}; }

std::string executablePath(ProcessID pid) {
  char path[PROC_PIDPATHINFO_MAXSIZE];
  const int length = proc_pidpath(pid, path, sizeof path);
  return length > 0 ? std::string(path, size_t(length)) : std::string();
}

/// The program's file name, which the kernel's own name cuts short; that one when the path is hidden.
std::string displayName(ProcessID pid, const std::string& path) {
  if (auto file = path.substr(path.rfind('/') + 1); !file.empty()) return file;
  char name[2 * MAXCOMLEN + 1];
  const int length = proc_name(pid, name, sizeof name);
  return length > 0 ? boundedText(name, size_t(length)) : "pid " + std::to_string(pid);
}

/// Nothing when the process has gone meanwhile.
std::optional<ProcessCounters> counters(ProcessID pid) {
  ProcessCounters process{.pid = pid};
  const auto info = processInfo<proc_bsdshortinfo>(pid, PROC_PIDT_SHORTBSDINFO);
  if (info) {
    process.parent = ProcessID(info->pbsi_ppid);
    process.comm = boundedText(info->pbsi_comm, sizeof info->pbsi_comm);
  }
  if (const auto used = usage(pid)) {
    process.start = used->ri_proc_start_abstime;
    process.cpuTime = used->ri_user_time + used->ri_system_time;
    process.footprint = used->ri_phys_footprint;
    process.diskRead = used->ri_diskio_bytesread;
    process.diskWritten = used->ri_diskio_byteswritten;
    process.energy = used->ri_energy_nj;
  } else if (errno == ESRCH && !info) {
    return std::nullopt;
  } else {
    process.hidden = hiddenCPU | hiddenMemory | hiddenDisk | hiddenEnergy | hiddenStart;
  }
  return process;
}

} // namespace

MacProcessTable::MacProcessTable(CommandRunner run)
    : run_(std::move(run)), timebase_(machTimebase()),
      responsible_(reinterpret_cast<ResponsibleProcess>(
          dlsym(RTLD_DEFAULT, "responsibility_get_pid_responsible_for_pid"))) {}

const std::vector<ProcessCounters>& MacProcessTable::read() {
  const auto traffic = readProcessTraffic(run_);
  processes_.clear();
  for (const ProcessID pid : processIDs()) {
    auto process = counters(pid);
    if (!process) continue;
    if (const auto bytes = traffic.find(pid); bytes != traffic.end()) process->network = bytes->second;
    processes_.push_back(std::move(*process));
  }
  return processes_;
}

std::optional<ProcessFacts> MacProcessTable::facts(ProcessID pid) {
  ProcessFacts facts{.path = executablePath(pid)};
  facts.name = displayName(pid, facts.path);
  if (responsible_) facts.responsible = std::max(0, responsible_(pid)); // -1 for a process that has gone
  return facts;
}

std::optional<std::uint64_t> MacProcessTable::start(ProcessID pid) {
  const auto used = usage(pid);
  if (!used) return std::nullopt;
  return used->ri_proc_start_abstime;
}

std::optional<Date> MacProcessTable::startDate(ProcessID pid) {
  const auto info = processInfo<proc_bsdinfo>(pid, PROC_PIDTBSDINFO);
  if (!info) return std::nullopt;
  return Date{double(info->pbi_start_tvsec) + double(info->pbi_start_tvusec) / 1e6};
}

std::optional<std::string> MacProcessTable::workingDirectory(ProcessID pid) {
  const auto info = processInfo<proc_vnodepathinfo>(pid, PROC_PIDVNODEPATHINFO);
  if (!info) return std::nullopt;
  auto path = boundedText(info->pvi_cdir.vip_path, sizeof info->pvi_cdir.vip_path);
  if (path.empty()) return std::nullopt;
  return path;
}

PortsByPID MacProcessTable::listeningPorts() { return readListeningPorts(run_); }

std::optional<bool> MacProcessTable::isListenedOn(int port) { return askWhetherListenedOn(run_, port); }

SignalOutcome MacProcessControl::send(ProcessID pid, std::uint64_t start, ProcessSignal signal) {
  if (pid < 1) return SignalOutcome::gone; // to the system that would be a whole group
  const auto used = usage(pid);
  if (!used) return errno == ESRCH ? SignalOutcome::gone : SignalOutcome::denied;
  if (used->ri_proc_start_abstime != start) return SignalOutcome::gone;
  if (kill(pid, signal == ProcessSignal::kill ? SIGKILL : SIGTERM) == 0) return SignalOutcome::sent;
  return errno == ESRCH ? SignalOutcome::gone : SignalOutcome::denied;
}

} // namespace korvell
