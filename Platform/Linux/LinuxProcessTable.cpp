#include "Platform/Linux/LinuxProcessTable.h"

#include "Platform/Formats/EnergyCounters.h"
#include "Platform/Formats/ProcessFiles.h"
#include "Platform/Formats/ProcessName.h"

#include <algorithm>
#include <ctime>
#include <limits>
#include <unistd.h>

namespace korvell {

namespace {

using Access = ProcDirectory::Access;

/// Beyond that many threads a process that reaped a child shows no storage traffic in that cycle.
constexpr std::int64_t maximumThreadsRead = 512;

std::optional<std::uint64_t> processClock(ProcessID pid) {
  // How clock_getcpuclockid(3) makes a clock of a process id, without its check of the id.
  const auto clock = static_cast<clockid_t>(~static_cast<unsigned>(pid) << 3 | 2u);
  timespec time;
  if (clock_gettime(clock, &time) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(time.tv_nsec);
}

/// Other users' descriptors are closed to us, so their sockets' holders can't be found.
std::optional<std::uint32_t> usersOfInterest(std::uint32_t user) {
  return user == 0 ? std::nullopt : std::optional(user);
}

Seconds secondsOf(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return Seconds{static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9};
}

} // namespace

LinuxProcessTable::Sources LinuxProcessTable::systemSources(std::shared_ptr<SharedReadings> shared) {
  Sources sources;
  sources.shared = std::move(shared);
  sources.cpuClock = processClock;
  sources.sinceBoot = [] { return secondsOf(CLOCK_BOOTTIME); };
  sources.sockets = std::make_unique<NetlinkSockets>();
  sources.bootTime = Date{(secondsOf(CLOCK_REALTIME) - secondsOf(CLOCK_BOOTTIME)).count()};
  sources.ticksPerSecond = static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
  sources.pageSize = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  sources.user = geteuid();
  return sources;
}

LinuxProcessTable::LinuxProcessTable(Sources sources)
    : sources_(std::move(sources)), proc_(sources_.proc),
      shared_(sources_.shared ? sources_.shared
                              : std::make_shared<SharedReadings>(sources_.proc, sources_.sys)),
      census_(usersOfInterest(sources_.user)) {
  shared_->findPackages(reader_);
}

const std::vector<ProcessCounters>& LinuxProcessTable::read() {
  const Seconds now = sources_.sinceBoot();
  const Seconds interval = lastRead_ ? now - *lastRead_ : Seconds{0};
  ended_.clear();
  anonymous_ = shared_->memory(SharedReadings::Half::processes, reader_).anonymous;
  matchList();
  readParentsOfOrphans();
  readMemoryOfSleepers(interval);
  updateSockets(now);
  shareEnergy();
  lastRead_ = now;
  return counters_;
}

/// Matches the new list with the last one, both by ascending id, and reads what the match asks for.
void LinuxProcessTable::matchList() {
  const auto& entries = proc_.list();
  nextCounters_.clear();
  nextStates_.clear();
  nextCounters_.reserve(entries.size());
  nextStates_.reserve(entries.size());
  std::size_t old = 0;
  const auto passEndedUpTo = [&](ProcessID pid) {
    for (; old < counters_.size() && counters_[old].pid < pid; ++old) ended_.push_back(counters_[old].pid);
  };
  for (const auto entry : entries) {
    passEndedUpTo(entry.pid);
    const bool listed = old < counters_.size() && counters_[old].pid == entry.pid;
    auto& counters = nextCounters_.emplace_back(listed ? std::move(counters_[old]) : ProcessCounters{});
    auto& state = nextStates_.emplace_back(listed ? std::move(states_[old]) : State{});
    if (listed) ++old;
    bool alive = listed && isStill(entry, counters, state) && readKnown(counters, state);
    if (!alive) {
      if (listed) ended_.push_back(entry.pid);
      counters = {};
      state = {};
      alive = readNew(entry, counters, state);
    }
    if (!alive) {
      nextCounters_.pop_back();
      nextStates_.pop_back();
    }
  }
  passEndedUpTo(std::numeric_limits<ProcessID>::max());
  counters_.swap(nextCounters_);
  states_.swap(nextStates_);
}

bool LinuxProcessTable::readNew(ProcDirectory::Entry entry, ProcessCounters& counters, State& state) {
  counters.pid = entry.pid;
  state.inode = entry.inode;
  state.moved = true;
  const auto cpu = sources_.cpuClock(entry.pid);
  state.hasClock = cpu.has_value();
  counters.cpuTime = cpu.value_or(0);
  if (!readStat(counters, state)) return false;
  if (state.kernelThread || state.statDenied) return true;
  readMemory(counters, state);
  readStorage(counters, state, true);
  return true;
}

/// The folder of a process that lives on gets a new number when the kernel drops what it had cached of it;
/// only a later start tells another process.
bool LinuxProcessTable::isStill(ProcDirectory::Entry entry, const ProcessCounters& counters, State& state) {
  if (state.inode == entry.inode) return true;
  const auto stat = parseProcessStat(proc_.read(entry.pid, "stat").text);
  if (!stat || stat->start != counters.start) return false;
  state.inode = entry.inode;
  return true;
}

/// False when it turns out to be another process, or none.
bool LinuxProcessTable::readKnown(ProcessCounters& counters, State& state) {
  const auto cpu = state.hasClock ? sources_.cpuClock(counters.pid) : std::nullopt;
  if (state.hasClock && !cpu) return false;
  if (cpu && *cpu < counters.cpuTime) return false;
  state.moved = !cpu || *cpu != counters.cpuTime;
  state.socketsKnown &= !state.moved;
  state.cpuAdvance = cpu ? *cpu - counters.cpuTime : 0;
  if (!state.moved) return true;
  if (cpu) counters.cpuTime = *cpu;
  if ((state.kernelThread && cpu) || state.statDenied) return true;
  return readFiles(counters, state);
}

bool LinuxProcessTable::readFiles(ProcessCounters& counters, State& state) {
  const auto start = counters.start;
  const auto ticks = counters.cpuTime;
  if (!readStat(counters, state) || counters.start != start) return false;
  if (!state.hasClock) state.cpuAdvance = counters.cpuTime > ticks ? counters.cpuTime - ticks : 0;
  if (state.kernelThread) return true;
  readMemory(counters, state);
  readStorage(counters, state, false);
  return true;
}

bool LinuxProcessTable::readStat(ProcessCounters& counters, State& state) {
  const auto file = proc_.read(counters.pid, "stat");
  if (file.access == Access::denied) { // /proc is mounted with hidepid
    state.statDenied = true;
    counters.hidden = allFigures;
    // Its share of the energy goes by its clock.
    if (state.hasClock) counters.hidden &= static_cast<std::uint8_t>(~(hiddenCPU | hiddenEnergy));
    return true;
  }
  return file.access == Access::ok && takeStat(file.text, counters, state);
}

bool LinuxProcessTable::takeStat(std::string_view text, ProcessCounters& counters, State& state) {
  const auto stat = parseProcessStat(text);
  if (!stat) return false;
  state.kernelThread = stat->kernelThread;
  const auto comm = stat->kernelThread ? stableKernelThreadName(stat->comm) : stat->comm;
  if (counters.comm != comm) {
    counters.comm = comm;
    state.ioDenied = state.descriptorsDenied = false; // another program may grant what this one refused
  }
  const bool zombie = stat->state == 'Z';
  if (zombie && !state.zombie) ended_.push_back(counters.pid); // its children have another parent by now
  state.zombie = zombie;
  state.childFaults = stat->childMinorFaults;
  state.threads = stat->threads;
  counters.parent = stat->parent;
  counters.start = stat->start;
  if (!state.hasClock) counters.cpuTime = stat->cpuTicks * (1'000'000'000 / sources_.ticksPerSecond);
  return true;
}

void LinuxProcessTable::readMemory(ProcessCounters& counters, const State& state) {
  if (state.zombie) {
    counters.footprint = 0;
  } else if (anonymous_ && anonymous_->swapped == 0) {
    const auto file = proc_.read(counters.pid, "statm");
    if (const auto statm = parseProcessStatm(file.text))
      counters.footprint =
          statm->resident > statm->shared ? (statm->resident - statm->shared) * sources_.pageSize : 0;
  } else {
    const auto file = proc_.read(counters.pid, "status");
    if (const auto status = parseProcessStatus(file.text))
      counters.footprint = status->rssAnon + status->vmSwap;
  }
}

void LinuxProcessTable::readStorage(ProcessCounters& counters, State& state, bool isNew) {
  if (state.ioDenied) return;
  const auto file = proc_.read(counters.pid, "io");
  if (file.access == Access::denied) {
    state.ioDenied = true;
    counters.hidden |= hiddenDisk;
    return;
  }
  const auto io = parseProcessIO(file.text);
  if (!io) return;
  const auto liveThreads = [&]() -> std::optional<ProcessIO> {
    return state.threads <= maximumThreadsRead ? liveThreadsIO(counters.pid) : std::nullopt;
  };
  if (isNew || (counters.hidden & hiddenDisk)) {
    state.storage.begin(*io, state.childFaults, liveThreads);
  } else {
    state.storage.advance(*io, state.childFaults, liveThreads);
  }
  counters.hidden &= static_cast<std::uint8_t>(~hiddenDisk);
  counters.diskRead = state.storage.total().read;
  counters.diskWritten = state.storage.total().written;
}

std::optional<ProcessIO> LinuxProcessTable::liveThreadsIO(ProcessID pid) {
  if (proc_.numbers(pid, "task", numbers_) != Access::ok) return std::nullopt;
  ProcessIO sum;
  for (const auto thread : numbers_) {
    const auto file = proc_.read(pid, ("task/" + std::to_string(thread) + "/io").c_str());
    if (file.access == Access::denied) return std::nullopt;
    if (const auto io = parseProcessIO(file.text)) sum = {sum.read + io->read, sum.written + io->written};
  }
  return sum;
}

/// A process whose parent ended has another parent now, and neither its clock nor its files tell by
/// themselves.
void LinuxProcessTable::readParentsOfOrphans() {
  if (ended_.empty()) return;
  std::sort(ended_.begin(), ended_.end());
  for (std::size_t i = 0; i < counters_.size(); ++i) {
    if (!std::binary_search(ended_.begin(), ended_.end(), counters_[i].parent)) continue;
    const auto stat = parseProcessStat(proc_.read(counters_[i].pid, "stat").text);
    if (stat && stat->start == counters_[i].start) counters_[i].parent = stat->parent;
  }
}

void LinuxProcessTable::readMemoryOfSleepers(Seconds interval) {
  for (const auto i : sleepers_.due(counters_, anonymous_, interval)) {
    const auto& state = states_[i];
    if (!state.moved && !state.kernelThread && !state.zombie && !state.statDenied)
      readMemory(counters_[i], state);
  }
  sleepers_.settle(counters_, anonymous_);
}

void LinuxProcessTable::updateSockets(Seconds now) {
  if (!sources_.sockets) return;
  // Listed before the closed ones are taken, see SocketLedger::update.
  if (!census_.take(*sources_.sockets, now, alive_)) return;
  sources_.sockets->drainClosed(closed_);
  for (const auto pid : ended_) ledger_.forget(pid);
  ledger_.update(alive_, closed_);
  ledger_.findHolders(now, [this](SocketLedger::Walk walk) { scanDescriptors(walk); });
  for (auto& counters : counters_) counters.network = ledger_.total(counters.pid);
}

void LinuxProcessTable::scanDescriptors(SocketLedger::Walk walk) {
  for (std::size_t i = 0; i < counters_.size() && !ledger_.wanted().empty(); ++i) {
    auto& state = states_[i];
    if (state.moved != (walk == SocketLedger::Walk::thoseThatRan) || state.kernelThread || state.zombie ||
        state.descriptorsDenied)
      continue;
    const auto pid = counters_[i].pid;
    if (!state.socketsKnown) readSockets(pid, state);
    for (const auto inode : state.sockets) ledger_.assign(inode, pid);
  }
}

/// They stay what they are until the process runs again.
void LinuxProcessTable::readSockets(ProcessID pid, State& state) {
  constexpr std::string_view prefix = "socket:[";
  state.sockets.clear();
  const auto access = proc_.numbers(pid, "fd", numbers_);
  state.descriptorsDenied = access == Access::denied;
  if (access != Access::ok) return;
  state.socketsKnown = true;
  for (const auto descriptor : numbers_) {
    const auto link = proc_.readLink(pid, ("fd/" + std::to_string(descriptor)).c_str());
    if (link.access == Access::denied) { // the folder may be open where its links are not
      state.descriptorsDenied = true;
      return;
    }
    auto target = link.text;
    if (!target.starts_with(prefix) || !target.ends_with(']')) continue;
    target = target.substr(prefix.size(), target.size() - prefix.size() - 1);
    if (const auto inode = parseInteger<std::uint32_t>(target)) state.sockets.push_back(*inode);
  }
}

/// The packages' energy goes to the processes by their shares of the CPU time that was used.
void LinuxProcessTable::shareEnergy() {
  if (!shared_->packages().isReadable()) return;
  auto packages = shared_->energy(SharedReadings::Half::processes, reader_);
  const auto used = microjoulesBetween(packages_, packages) * 1000; // nanojoules
  packages_ = std::move(packages);
  advances_.clear();
  for (const auto& state : states_) advances_.push_back(state.cpuAdvance);
  const auto shares = energyShares(used, advances_);
  for (std::size_t i = 0; i < counters_.size(); ++i) counters_[i].energy += shares[i];
}

PortsByPID LinuxProcessTable::listeningPorts() {
  if (!lastRead_) read();
  return ledger_.listeningPorts();
}

std::optional<bool> LinuxProcessTable::isListenedOn(int port) {
  std::vector<SocketRecord> listening;
  if (!sources_.sockets || !sources_.sockets->dumpListening(listening)) return std::nullopt;
  return std::ranges::find(listening, port, &SocketRecord::localPort) != listening.end();
}

} // namespace korvell
