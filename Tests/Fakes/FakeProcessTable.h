#pragma once
// A world of processes in memory. Change `processes` between cycles; `asked` records whose facts were read.

#include "Platform/ProcessTable.h"

#include <algorithm>
#include <map>

namespace korvell {

class FakeProcessTable final : public ProcessTable, public ProcessControl {
public:
  struct Entry {
    ProcessCounters counters;
    ProcessFacts facts;
    std::string directory;
    bool deniesSignals = false;
  };
  struct Sent {
    ProcessID pid = 0;
    ProcessSignal signal = ProcessSignal::terminate;
    bool operator==(const Sent&) const = default;
  };

  std::map<ProcessID, Entry> processes;
  PortsByPID ports;
  int hiddenPort = 0; ///< somebody listens there whose descriptors may not be read
  Timebase base;
  std::uint8_t toldByHelper = allFigures;
  std::vector<ProcessID> asked;
  std::vector<Sent> sent;

  Entry& add(ProcessID pid, const std::string& comm, ProcessID parent = 1) {
    auto& entry = processes[pid];
    entry.counters = {.pid = pid, .parent = parent, .comm = comm, .start = std::uint64_t(pid) * 10};
    entry.facts = {.path = "/opt/" + comm, .name = comm};
    return entry;
  }

  const std::vector<ProcessCounters>& read() override {
    list_.clear();
    for (const auto& [pid, entry] : processes) list_.push_back(entry.counters);
    return list_;
  }
  std::optional<ProcessFacts> facts(ProcessID pid) override {
    asked.push_back(pid);
    const auto* entry = find(pid);
    return entry ? std::optional(entry->facts) : std::nullopt;
  }
  std::optional<std::uint64_t> start(ProcessID pid) override {
    const auto* entry = find(pid);
    return entry ? std::optional(entry->counters.start) : std::nullopt;
  }
  std::optional<Date> startDate(ProcessID pid) override {
    const auto ticks = start(pid);
    return ticks ? std::optional(Date{double(*ticks)}) : std::nullopt;
  }
  std::optional<std::string> workingDirectory(ProcessID pid) override {
    const auto* entry = find(pid);
    return entry && !entry->directory.empty() ? std::optional(entry->directory) : std::nullopt;
  }
  PortsByPID listeningPorts() override { return ports; }
  std::optional<bool> isListenedOn(int port) override { return port == hiddenPort; }
  Timebase timebase() const override { return base; }
  bool energyIsEstimate() const override { return false; }
  bool tellsEnergy() const override { return true; }
  std::uint8_t figuresOfHelper() const override { return toldByHelper; }

  SignalOutcome send(ProcessID pid, std::uint64_t start, ProcessSignal signal) override {
    const auto* entry = find(pid);
    if (!entry || entry->counters.start != start) return SignalOutcome::gone;
    if (entry->deniesSignals) return SignalOutcome::denied;
    sent.push_back({pid, signal});
    return SignalOutcome::sent;
  }

private:
  const Entry* find(ProcessID pid) const {
    const auto found = processes.find(pid);
    return found == processes.end() ? nullptr : &found->second;
  }
  std::vector<ProcessCounters> list_;
};

class FakeRunningApplications final : public RunningApplications {
public:
  std::vector<RunningApplication> applications;
  std::vector<std::pair<ProcessID, bool>> quits; ///< process and whether it was forced

  std::vector<RunningApplication> list() override { return applications; }
  bool quit(ProcessID pid, bool force) override {
    const bool known = std::ranges::count(applications, pid, &RunningApplication::pid) > 0;
    if (known) quits.emplace_back(pid, force);
    return known;
  }
};

} // namespace korvell
