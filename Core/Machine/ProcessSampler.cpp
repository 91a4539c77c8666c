#include "Core/Machine/ProcessSampler.h"

#include <algorithm>

namespace korvell {

namespace {

/// More than this is a counter that jumped, not a process.
constexpr double maximumWatts = 500;

std::uint64_t advance(std::uint64_t now, std::uint64_t before) { return now > before ? now - before : 0; }

} // namespace

std::uint8_t mergeHidden(ProcessCounters& process, const RusageSample* sample, std::uint8_t told) {
  if (!sample || (!(process.hidden & hiddenStart) && sample->start != process.start)) return process.hidden;
  const auto taken = process.hidden & told;
  if (taken & hiddenStart) process.start = sample->start;
  if (taken & hiddenCPU) process.cpuTime = sample->cpuTime;
  if (taken & hiddenMemory) process.footprint = sample->footprint;
  if (taken & hiddenDisk) {
    process.diskRead = sample->diskRead;
    process.diskWritten = sample->diskWritten;
  }
  if (taken & hiddenEnergy) process.energy = sample->energy;
  return static_cast<std::uint8_t>(process.hidden & ~told);
}

ProcessSampler::ProcessSampler(Services services, int logicalProcessors, PrivilegedRusage privilegedRusage)
    : services_(services), maximumCPU_(std::max(1, logicalProcessors) * 100.0),
      privilegedRusage_(std::move(privilegedRusage)), timebase_(services.table.timebase()) {}

std::vector<AppUsage> ProcessSampler::sample(const PortsByPID& ports) {
  const auto& processes = services_.table.read();
  const Seconds elapsed = advanceClock();
  beginCycle(processes);
  const auto told = askHelper(processes);
  privilegedUse_ = {};
  hasTraffic_ =
      std::ranges::any_of(processes, [](const auto& process) { return process.network.has_value(); });

  std::vector<ProcessUsage> usages;
  usages.reserve(processes.size());
  for (const auto& process : processes) {
    if (process.hidden) {
      auto merged = process;
      const auto answer = told.find(process.pid);
      const auto unknown = mergeHidden(merged, answer == told.end() ? nullptr : &answer->second,
                                       services_.table.figuresOfHelper());
      ++(unknown ? privilegedUse_.hidden : privilegedUse_.told);
      usages.push_back(usage(merged, identify(merged, unknown), unknown, elapsed));
    } else {
      usages.push_back(usage(process, identify(process, 0), 0, elapsed));
    }
    if (const auto listening = ports.find(process.pid); listening != ports.end())
      usages.back().ports = listening->second;
  }
  forgetGone();
  return grouped(processes, std::move(usages));
}

void ProcessSampler::judge(KnownParts& known) const {
  known.set(KnownPart::processes, !parents_.empty());
  known.set(KnownPart::processTraffic, hasTraffic_);
  if (services_.table.tellsEnergy()) known.set(KnownPart::processEnergy, Knowledge::fresh);
}

const ProcessSampler::Identity* ProcessSampler::identity(ProcessID pid) const {
  const auto found = identities_.find(pid);
  return found == identities_.end() ? nullptr : &found->second.identity;
}

ProcessID ProcessSampler::parent(ProcessID pid) const {
  const auto found = parents_.find(pid);
  return found == parents_.end() ? 0 : found->second;
}

const ProcessFacts* ProcessSampler::facts(ProcessID pid) {
  if (!parents_.contains(pid)) return nullptr;
  // Only an identity that this cycle has confirmed is known not to be a reused process id's.
  if (const auto known = identities_.find(pid); known != identities_.end() && known->second.cycle == cycle_)
    return &known->second.identity.facts;
  auto [entry, isNew] = strangers_.try_emplace(pid);
  if (isNew) entry->second = services_.table.facts(pid).value_or(ProcessFacts{});
  return &entry->second;
}

Seconds ProcessSampler::advanceClock() {
  const Seconds now = services_.clock.monotonic();
  const Seconds elapsed = lastSample_ ? now - *lastSample_ : Seconds{0};
  lastSample_ = now;
  return elapsed;
}

void ProcessSampler::beginCycle(const std::vector<ProcessCounters>& processes) {
  ++cycle_;
  strangers_.clear();
  parents_.clear();
  for (const auto& process : processes) parents_[process.pid] = process.parent;
  bundlePathByPID_.clear();
  for (auto& application : services_.applications.list())
    bundlePathByPID_[application.pid] = std::move(application.bundlePath);
  services_.owners.beginCycle();
}

RusageSample::Map ProcessSampler::askHelper(const std::vector<ProcessCounters>& processes) const {
  if (!privilegedRusage_) return {};
  std::vector<ProcessID> hidden;
  for (const auto& process : processes)
    if (process.hidden) hidden.push_back(process.pid);
  return hidden.empty() ? RusageSample::Map{} : privilegedRusage_(hidden);
}

const ProcessSampler::Identity& ProcessSampler::identify(const ProcessCounters& process,
                                                         std::uint8_t unknown) {
  auto& known = identities_[process.pid];
  auto& identity = known.identity;
  const bool startIsTold = !(unknown & hiddenStart);
  const bool sameStart = identity.start == process.start || !startIsTold || !known.startIsKnown;
  const bool same = known.cycle != 0 && sameStart && identity.comm == process.comm;
  if (startIsTold || !same) {
    identity.start = process.start;
    known.startIsKnown = startIsTold;
  }
  if (!same || known.askAgain) {
    identity.comm = process.comm;
    identity.facts = services_.table.facts(process.pid).value_or(ProcessFacts{});
    if (identity.facts.name.empty()) identity.facts.name = "pid " + std::to_string(process.pid);
    identity.owner = services_.owners.owner(process.pid, identity.facts, *this);
    known.askAgain = !same && !identity.facts.settled;
  }
  known.cycle = cycle_;
  return identity;
}

ProcessUsage ProcessSampler::usage(const ProcessCounters& process, const Identity& identity,
                                   std::uint8_t unknown, Seconds elapsed) {
  ProcessUsage usage{
      .pid = process.pid, .name = identity.name(), .path = identity.path(), .memory = process.footprint};
  setCounterRates(usage, process, identity.start, unknown, elapsed);
  setNetworkRates(usage, process, identity.start, elapsed);
  return usage;
}

void ProcessSampler::setCounterRates(ProcessUsage& usage, const ProcessCounters& process, std::uint64_t start,
                                     std::uint8_t unknown, Seconds elapsed) {
  const Previous now{.start = start,
                     .cpuNanos = process.cpuTime * timebase_.numer / timebase_.denom,
                     .read = process.diskRead,
                     .written = process.diskWritten,
                     .energy = process.energy,
                     .unknown = unknown,
                     .cycle = cycle_};
  auto& before = previous_[process.pid];
  const bool comparable = before.cycle != 0 && before.start == start && elapsed.count() > 0;
  if (comparable) {
    const auto missing = before.unknown | unknown;
    const double seconds = elapsed.count();
    if (!(missing & hiddenCPU))
      usage.cpu = std::min(maximumCPU_, advance(now.cpuNanos, before.cpuNanos) / (seconds * 1e9) * 100);
    if (!(missing & hiddenDisk)) {
      usage.diskRead = advance(now.read, before.read) / seconds;
      usage.diskWrite = advance(now.written, before.written) / seconds;
    }
    if (!(missing & hiddenEnergy)) {
      const double watts = advance(now.energy, before.energy) / 1e9 / seconds;
      usage.power = watts > maximumWatts ? 0 : watts;
    }
  }
  before = now;
}

void ProcessSampler::setNetworkRates(ProcessUsage& usage, const ProcessCounters& process, std::uint64_t start,
                                     Seconds elapsed) {
  if (!process.network) return;
  auto& before = previousNet_[process.pid];
  if (before.cycle != 0 && before.start == start && elapsed.count() > 0) {
    usage.netIn = advance(process.network->in, before.bytes.in) / elapsed.count();
    usage.netOut = advance(process.network->out, before.bytes.out) / elapsed.count();
  }
  before = {.bytes = *process.network, .start = start, .cycle = cycle_};
}

std::vector<AppUsage> ProcessSampler::grouped(const std::vector<ProcessCounters>& processes,
                                              std::vector<ProcessUsage> usages) {
  struct Group {
    std::shared_ptr<const Owner> owner;
    std::vector<std::size_t> indices;
  };
  std::vector<Group> groups;
  std::unordered_map<std::string_view, std::size_t> groupByKey;
  for (std::size_t i = 0; i < usages.size(); ++i) {
    const auto& owner = identities_.at(usages[i].pid).identity.owner.owner;
    const auto [entry, isNew] = groupByKey.try_emplace(owner->key, groups.size());
    if (isNew) groups.push_back({owner, {}});
    groups[entry->second].indices.push_back(i);
  }

  std::vector<AppUsage> apps;
  apps.reserve(groups.size());
  std::vector<GroupMember> members;
  for (const auto& [owner, indices] : groups) {
    members.clear();
    auto& app =
        apps.emplace_back(AppUsage{.id = owner->key, .name = owner->name, .bundlePath = owner->bundlePath});
    app.processes.reserve(indices.size());
    for (const auto i : indices) {
      members.push_back(
          {processes[i].pid, processes[i].parent, identities_.at(processes[i].pid).identity.start});
      app.processes.push_back(std::move(usages[i]));
    }
    app.mainPID = mainPID(*owner, members);
  }
  return apps;
}

std::optional<ProcessID> ProcessSampler::mainPID(const Owner& owner,
                                                 std::span<const GroupMember> members) const {
  if (!owner.bundlePath) return std::nullopt;
  for (const auto& [pid, path] : bundlePathByPID_)
    if (path == *owner.bundlePath) return pid;
  return services_.owners.mainProcess(owner, members);
}

void ProcessSampler::forgetGone() {
  const auto isGone = [this](const auto& entry) { return entry.second.cycle != cycle_; };
  std::erase_if(previous_, isGone);
  std::erase_if(previousNet_, isGone);
  std::erase_if(identities_, isGone);
}

} // namespace korvell
