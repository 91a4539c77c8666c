#pragma once
// Every process: what it has used so far, what decides to which application it belongs, and how to send it a
// signal without ever hitting a stranger. Raw counters and facts only: shares, rates, identities, owners and
// groups are made by Core/Machine/ProcessSampler.
//
// A process is known by its id together with its start time; ids are reused. One thread at a time (the
// sampler's queue), except ProcessControl, which may be called from any thread. A process that vanishes while
// it is read is left out or answered with nothing.

#include "Base/Date.h"
#include "Platform/MachineCounters.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace korvell {

using ProcessID = std::int32_t;

/// TCP ports on which each process listens, ascending. Processes without any are absent.
using PortsByPID = std::unordered_map<ProcessID, std::vector<int>>;

/// Which of a process's figures the system hid from this user. A hidden figure is 0.
enum HiddenFigure : std::uint8_t {
  hiddenCPU = 1,
  hiddenMemory = 2,
  hiddenDisk = 4,
  hiddenEnergy = 8,
  hiddenStart = 16, ///< the start time itself: whoever tells the figures tells the start too
};
inline constexpr std::uint8_t allFigures = 31;

/// What one process has used over its life.
struct ProcessCounters {
  ProcessID pid = 0;
  ProcessID parent = 0;
  std::string comm;            ///< the kernel's short command name, as raw bytes
  std::uint64_t start = 0;     ///< in raw ticks of the system's own clock; with pid an identity
  std::uint64_t cpuTime = 0;   ///< user and system time in units of ProcessTable::timebase()
  std::uint64_t footprint = 0; ///< bytes that nobody else would keep if this process ended
  std::uint64_t diskRead = 0;  ///< bytes from and to storage, without those of ended children
  std::uint64_t diskWritten = 0;
  std::uint64_t energy = 0; ///< nanojoules
  /// Bytes received and sent, those of closed connections included. Absent when there is no reading.
  std::optional<ByteCounters> network;
  std::uint8_t hidden = 0; ///< HiddenFigure bits
  bool operator==(const ProcessCounters&) const = default;
};

/// What does not change while a process keeps its identity. Fields that a system lacks are empty.
struct ProcessFacts {
  std::string path;          ///< of the executable; empty when hidden
  std::string name;          ///< display name, never empty: "pid 42" at worst
  ProcessID responsible = 0; ///< macOS: the responsible process; 0 when unknown
  std::uint32_t user = 0;    ///< effective user id (Linux)
  bool kernelThread = false; ///< Linux
  std::string controlGroup;  ///< Linux: path in the unified hierarchy, "/user.slice/…/app-x-1.scope"
  std::string desktopFile;   ///< Linux: the desktop entry that a launcher started it from
  ProcessID launchedPID = 0; ///< Linux: the process that was launched from it
  std::string appImage;      ///< Linux: the AppImage file that it runs from
  bool settled = true;       ///< false while so young that a launcher may still move it to another group
  bool operator==(const ProcessFacts&) const = default;
};

/// Nanoseconds = units × numer ÷ denom.
struct Timebase {
  std::uint32_t numer = 1;
  std::uint32_t denom = 1;
  bool operator==(const Timebase&) const = default;
};

class ProcessTable {
public:
  virtual ~ProcessTable() = default;

  /// Reads every process, by ascending id. The list is the table's own and stands until the next call.
  virtual const std::vector<ProcessCounters>& read() = 0;
  /// Costs several system calls: for new identities only.
  virtual std::optional<ProcessFacts> facts(ProcessID pid) = 0;
  /// The start time as in ProcessCounters, read anew.
  virtual std::optional<std::uint64_t> start(ProcessID pid) = 0;
  /// The same as an instant; equal each time it is asked within one run.
  virtual std::optional<Date> startDate(ProcessID pid) = 0;
  virtual std::optional<std::string> workingDirectory(ProcessID pid) = 0;
  /// Those of all processes whose descriptors may be read. May start a program (macOS).
  virtual PortsByPID listeningPorts() = 0;
  /// Whether any process listens on that TCP port, also one whose descriptors may not be read. Nothing when
  /// the system does not say.
  virtual std::optional<bool> isListenedOn(int port) = 0;

  virtual Timebase timebase() const = 0;
  /// True when energy is a share of the processor package's and no counter of the process's own.
  virtual bool energyIsEstimate() const = 0;
  /// False where no process has an energy figure.
  virtual bool tellsEnergy() const = 0;
  /// HiddenFigure bits of what this system's privileged helper tells; in its answers the others mean nothing.
  virtual std::uint8_t figuresOfHelper() const { return allFigures; }
};

/// A text of an application bundle's information ("CFBundleName"), or nothing when it has none.
using BundleInfo =
    std::function<std::optional<std::string>(const std::string& bundlePath, std::string_view key)>;

/// An application as the system's own list of running applications knows it.
struct RunningApplication {
  ProcessID pid = 0;
  std::string bundlePath;
  bool operator==(const RunningApplication&) const = default;
};

/// Empty on systems that keep no such list (Linux).
class RunningApplications {
public:
  virtual ~RunningApplications() = default;
  virtual std::vector<RunningApplication> list() = 0;
  /// Asks an application to quit as its own menu would, or ends it at once with `force`. False when the
  /// system does not know the process as an application: then a signal is the way.
  virtual bool quit(ProcessID pid, bool force) = 0;
};

enum class ProcessSignal { terminate, kill };

enum class SignalOutcome {
  sent,
  gone,   ///< the process has ended, or its id belongs to another one by now; nothing was sent
  denied, ///< it belongs to somebody else
};

class ProcessControl {
public:
  virtual ~ProcessControl() = default;
  /// Sends a signal only to the process that began at `start`; the start time is read again right before.
  [[nodiscard]] virtual SignalOutcome send(ProcessID pid, std::uint64_t start, ProcessSignal signal) = 0;
};

} // namespace korvell
