#pragma once
// The process table from /proc, the processes' CPU clocks and the kernel's socket diagnostics.
//
// Memory is RssAnon + VmSwap: what the process alone keeps, swapped or not. Memory that it shares with its
// forks counts in each of them, shared memory segments in none; the exact proportional figure costs thirty
// times as much (123 µs a process, milliseconds for large ones).
//
// What a cycle reads. A process's CPU clock costs 0.2 µs and needs no privileges; opening, reading and
// closing three files costs 14. A process whose clock stands still has neither read nor written storage, nor
// called exec, so none of its files is read again, except: its memory in rotation, none older than 30 s, and
// all at once when the machine's anonymous memory moved by 1 % more than the processes that ran explain
// (memory can be changed from outside); its parent, when the one it had has ended; its sockets' bytes always.

#include "Platform/Formats/SleepingMemory.h"
#include "Platform/Formats/SocketLedger.h"
#include "Platform/Linux/ProcDirectory.h"
#include "Platform/Linux/SharedReadings.h"
#include "Platform/Linux/SocketDiag.h"
#include "Platform/Linux/StorageAdvance.h"
#include "Platform/ProcessTable.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class LinuxProcessTable final : public ProcessTable {
public:
  struct Sources {
    std::string proc = "/proc";
    std::string sys = "/sys";
    /// CPU time of a process in nanoseconds; nothing where there is no such clock: ticks serve then.
    std::function<std::optional<std::uint64_t>(ProcessID)> cpuClock;
    std::function<Seconds()> sinceBoot;     ///< time spent suspended included
    std::unique_ptr<SocketSource> sockets;  ///< may be null: no traffic then
    std::shared_ptr<SharedReadings> shared; ///< with the machine's counters; null: its own
    Date bootTime;                          ///< wall clock at boot, taken once
    std::uint64_t ticksPerSecond = 100;
    std::uint64_t pageSize = 4096;
    std::uint32_t user = 0; ///< effective user id of this process
  };
  /// The machine itself.
  static Sources systemSources(std::shared_ptr<SharedReadings> shared = nullptr);

  explicit LinuxProcessTable(Sources sources);

  const std::vector<ProcessCounters>& read() override;
  std::optional<ProcessFacts> facts(ProcessID pid) override;
  std::optional<std::uint64_t> start(ProcessID pid) override;
  std::optional<Date> startDate(ProcessID pid) override;
  std::optional<std::string> workingDirectory(ProcessID pid) override;
  PortsByPID listeningPorts() override;
  std::optional<bool> isListenedOn(int port) override;
  Timebase timebase() const override { return {}; }
  bool energyIsEstimate() const override { return shared_->packages().isReadable(); }
  bool tellsEnergy() const override { return shared_->packages().isReadable(); }
  std::uint8_t figuresOfHelper() const override { return hiddenDisk | hiddenStart; }

private:
  /// What is remembered of a process beside its counters.
  struct State {
    std::uint64_t inode = 0; ///< of its folder
    std::uint64_t cpuAdvance = 0;
    bool kernelThread = false;
    bool zombie = false;
    bool moved = false; ///< its clock did, in this cycle
    bool hasClock = false;
    bool statDenied = false;
    bool ioDenied = false;
    bool descriptorsDenied = false;
    bool socketsKnown = false;          ///< since it last ran
    std::vector<std::uint32_t> sockets; ///< inodes behind its descriptors
    std::uint64_t childFaults = 0;
    std::int64_t threads = 0;
    StorageAdvance storage;
  };

  void matchList();
  bool readNew(ProcDirectory::Entry entry, ProcessCounters& counters, State& state);
  bool isStill(ProcDirectory::Entry entry, const ProcessCounters& counters, State& state);
  bool readKnown(ProcessCounters& counters, State& state);
  bool readFiles(ProcessCounters& counters, State& state);
  bool readStat(ProcessCounters& counters, State& state);
  bool takeStat(std::string_view text, ProcessCounters& counters, State& state);
  void readMemory(ProcessCounters& counters, const State& state);
  void readStorage(ProcessCounters& counters, State& state, bool isNew);
  std::optional<ProcessIO> liveThreadsIO(ProcessID pid);
  void readParentsOfOrphans();
  void readMemoryOfSleepers(Seconds interval);
  void updateSockets(Seconds now);
  void scanDescriptors(SocketLedger::Walk walk);
  void readSockets(ProcessID pid, State& state);
  void shareEnergy();

  Sources sources_;
  ProcDirectory proc_;
  FileReader reader_;
  std::shared_ptr<SharedReadings> shared_;
  std::map<int, EnergyCounter> packages_; ///< as they were last read
  std::vector<std::uint64_t> advances_;   ///< CPU time in this cycle, in step with the counters
  SocketCensus census_;
  SocketLedger ledger_;
  std::vector<ProcessCounters> counters_, nextCounters_; ///< by ascending id, states_ in step
  std::vector<State> states_, nextStates_;
  std::vector<ProcessID> ended_; ///< gone or become zombies in this cycle, ascending once sorted
  std::vector<SocketRecord> alive_, closed_;
  std::vector<int> numbers_;
  std::optional<AnonymousMemory> anonymous_;
  SleepingMemory sleepers_;
  std::optional<Seconds> lastRead_;
};

} // namespace korvell
