#pragma once
// Single processes in memory, as streams' owners ask about them.

#include "Audio/StreamOwners.h"

#include <map>

namespace korvell {

class FakeStreamProcesses final : public StreamProcesses {
public:
  std::map<ProcessID, ProcessID> inside; ///< to the id in a namespace of their own

  void add(ProcessID pid, ProcessID parent, ProcessFacts facts) {
    processes_[pid] = {parent, std::move(facts)};
  }
  std::optional<ProcessFacts> facts(ProcessID pid) override {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? std::nullopt : std::optional(found->second.second);
  }
  ProcessID parent(ProcessID pid) override {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? 0 : found->second.first;
  }
  std::vector<ProcessID> insiders(ProcessID inner) override {
    std::vector<ProcessID> found;
    for (const auto& [pid, id] : inside)
      if (id == inner) found.push_back(pid);
    return found;
  }

private:
  std::map<ProcessID, std::pair<ProcessID, ProcessFacts>> processes_;
};

} // namespace korvell
