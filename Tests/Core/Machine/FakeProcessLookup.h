#pragma once
// Processes as the owners' rules look them up.

#include "Core/Machine/Owners.h"

#include <map>

namespace korvell {

class FakeProcessLookup final : public ProcessLookup {
public:
  void add(ProcessID pid, ProcessID parent, ProcessFacts facts) {
    processes_[pid] = {parent, std::move(facts)};
  }
  ProcessID parent(ProcessID pid) const override {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? 0 : found->second.first;
  }
  const ProcessFacts* facts(ProcessID pid) override {
    const auto found = processes_.find(pid);
    return found == processes_.end() ? nullptr : &found->second.second;
  }

private:
  std::map<ProcessID, std::pair<ProcessID, ProcessFacts>> processes_;
};

} // namespace korvell
