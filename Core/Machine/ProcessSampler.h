#pragma once
// Turns the process table into the applications of a snapshot: counters of two cycles become rates, every
// process gets an identity and an owner, and processes of one owner become one application.
//
// Holds the last cycle's counters and what is known of each live process; both forget a process in the cycle
// that does not find it. On the sampler's queue. Nothing fails: what could not be read is zero.

#include "Core/Machine/Models.h"
#include "Core/Machine/Owners.h"
#include "Core/Machine/PrivilegedUse.h"
#include "Helper/Shared/RusageSample.h"
#include "Platform/KnownParts.h"
#include "Platform/ProcessTable.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace korvell {

/// Asks the privileged helper about processes that this user may not read. May block for as long as its own
/// time limit; answers what it got.
using PrivilegedRusage = std::function<RusageSample::Map(const std::vector<ProcessID>&)>;

class ProcessSampler final : private ProcessLookup {
public:
  /// What is known of a live process. Valid only while `comm` and `start` both match: a reused process id is
  /// identified afresh.
  struct Identity {
    std::string comm;
    std::uint64_t start = 0;
    ProcessFacts facts;
    OwnerDecision owner;

    const std::string& path() const { return facts.path; }
    const std::string& name() const { return facts.name; }
  };

  /// The services must outlive the sampler.
  struct Services {
    ProcessTable& table;
    RunningApplications& applications;
    OwnerRules& owners;
    const Clock& clock;
  };

  ProcessSampler(Services services, int logicalProcessors, PrivilegedRusage privilegedRusage = {});

  /// One cycle. `ports` as the development-server scanner last found them.
  std::vector<AppUsage> sample(const PortsByPID& ports);

  /// Parent of every process of the last cycle.
  const std::unordered_map<ProcessID, ProcessID>& parents() const { return parents_; }
  /// Nothing when the last cycle did not find the process.
  const Identity* identity(ProcessID pid) const;
  const PrivilegedUse& privilegedUse() const { return privilegedUse_; } ///< in the last cycle
  /// Says which figures of the last cycle's processes were read.
  void judge(KnownParts& known) const;
  bool energyIsEstimate() const { return services_.table.energyIsEstimate(); }

private:
  struct Previous {
    std::uint64_t start = 0;
    std::uint64_t cpuNanos = 0;
    std::uint64_t read = 0;
    std::uint64_t written = 0;
    std::uint64_t energy = 0; ///< nanojoules
    std::uint8_t unknown = 0; ///< HiddenFigure bits: nobody told these figures, so nothing can be compared
    std::uint32_t cycle = 0;  ///< the cycle that stored it
  };
  struct PreviousNet {
    ByteCounters bytes;
    std::uint64_t start = 0;
    std::uint32_t cycle = 0;
  };
  struct Known {
    Identity identity;
    std::uint32_t cycle = 0;
    bool startIsKnown = false; ///< somebody has told its start
    bool askAgain = false;     ///< it was unsettled: ask once more in the next cycle
  };
  ProcessID parent(ProcessID pid) const override;
  const ProcessFacts* facts(ProcessID pid) override;

  Seconds advanceClock();
  void beginCycle(const std::vector<ProcessCounters>& processes);
  RusageSample::Map askHelper(const std::vector<ProcessCounters>& processes) const;
  const Identity& identify(const ProcessCounters& process, std::uint8_t unknown);
  ProcessUsage usage(const ProcessCounters& process, const Identity& identity, std::uint8_t unknown,
                     Seconds elapsed);
  void setCounterRates(ProcessUsage& usage, const ProcessCounters& process, std::uint64_t start,
                       std::uint8_t unknown, Seconds elapsed);
  void setNetworkRates(ProcessUsage& usage, const ProcessCounters& process, std::uint64_t start,
                       Seconds elapsed);
  std::vector<AppUsage> grouped(const std::vector<ProcessCounters>& processes,
                                std::vector<ProcessUsage> usages);
  std::optional<ProcessID> mainPID(const Owner& owner, std::span<const GroupMember> members) const;
  void forgetGone();

  Services services_;
  double maximumCPU_; ///< percent
  PrivilegedRusage privilegedRusage_;
  PrivilegedUse privilegedUse_;
  bool hasTraffic_ = false; ///< some process of the last cycle told its own
  Timebase timebase_;
  std::optional<Seconds> lastSample_;
  std::uint32_t cycle_ = 0;
  std::unordered_map<ProcessID, Previous> previous_;
  std::unordered_map<ProcessID, PreviousNet> previousNet_;
  std::unordered_map<ProcessID, ProcessID> parents_;
  std::map<ProcessID, std::string> bundlePathByPID_; ///< running applications
  std::unordered_map<ProcessID, Known> identities_;
  std::unordered_map<ProcessID, ProcessFacts> strangers_; ///< asked about by rules before their own turn
};

/// Replaces what the system hid by what the helper tells, the figures `told`, when both mean the same
/// process. Returns the bits of what is still unknown.
[[nodiscard]] std::uint8_t mergeHidden(ProcessCounters& process, const RusageSample* sample,
                                       std::uint8_t told);

} // namespace korvell
