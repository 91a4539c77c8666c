#include "Audio/StreamOwners.h"

#include "Base/Localization.h"

#include <string_view>
#include <unordered_map>
#include <utility>

namespace korvell {

namespace {

std::string_view fileName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

/// What the rules ask about ancestors, of one stream.
class Lookup final : public ProcessLookup {
public:
  explicit Lookup(StreamProcesses& processes) : processes_(processes) {}
  ProcessID parent(ProcessID pid) const override { return processes_.parent(pid); }
  const ProcessFacts* facts(ProcessID pid) override {
    auto [known, isNew] = facts_.try_emplace(pid);
    if (isNew) known->second = processes_.facts(pid);
    return known->second ? &*known->second : nullptr;
  }

private:
  StreamProcesses& processes_;
  std::unordered_map<ProcessID, std::optional<ProcessFacts>> facts_;
};

bool runs(const ProcessFacts& facts, const std::string& program) {
  return !program.empty() && fileName(facts.path) == fileName(program);
}

} // namespace

StreamOwners::StreamOwners(std::unique_ptr<OwnerRules> rules, std::unique_ptr<StreamProcesses> processes)
    : rules_(std::move(rules)), processes_(std::move(processes)) {
  rules_->beginCycle(); // reads what takes time, before a stream waits for it
}

StreamOwner StreamOwners::owner(const SoundStream& stream) {
  rules_->beginCycle();
  if (auto process = byProcess(stream)) return *process;
  if (!stream.sandboxID.empty()) {
    if (auto owner = rules_->claimed(stream.sandboxID, "")) return {std::move(*owner), 0};
    return {{"proc:" + stream.sandboxID, stream.sandboxID, std::nullopt}, 0};
  }
  if (auto owner = rules_->claimed(stream.applicationID, stream.applicationName))
    return {std::move(*owner), 0};
  for (const auto* name : {&stream.program, &stream.applicationName, &stream.applicationID})
    if (const auto plain = std::string(fileName(*name)); !plain.empty())
      return {{"proc:" + plain, plain, std::nullopt}, 0};
  return {{"proc:?", localized("Unknown program"), std::nullopt}, 0};
}

std::optional<StreamOwner> StreamOwners::byProcess(const SoundStream& stream) {
  if (!stream.isLocal || stream.pid <= 0) return std::nullopt;
  Lookup lookup(*processes_);
  const auto* facts = lookup.facts(stream.pid);
  auto pid = stream.pid;
  if (!facts || !(stream.isPIDCertain || runs(*facts, stream.program))) {
    ProcessID found = 0;
    for (const auto candidate : processes_->insiders(stream.pid)) {
      const auto* inside = lookup.facts(candidate);
      if (!inside || !runs(*inside, stream.program)) continue;
      if (found != 0) return std::nullopt; // several: none is known to be it
      found = candidate;
    }
    if (found == 0) return std::nullopt;
    pid = found;
    facts = lookup.facts(found);
  }
  return StreamOwner{*rules_->owner(pid, *facts, lookup).owner, pid};
}

} // namespace korvell
