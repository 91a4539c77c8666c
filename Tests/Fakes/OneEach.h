#pragma once
// Owners' rules by which each program is an application of its own, known by its path.

#include "Core/Machine/Owners.h"

namespace korvell {

class OneEach final : public OwnerRules {
public:
  OwnerDecision owner(ProcessID, const ProcessFacts& facts, ProcessLookup&) override {
    return {std::make_shared<Owner>(Owner{facts.path, facts.name, facts.path}), "each"};
  }
  SystemGroup systemGroup() const override { return linuxSystemGroup; }
};

} // namespace korvell
