#pragma once
// Sources as a test lists them; every look at the own usage finds another 10 ms of CPU time gone.

#include "Platform/Diagnostics.h"

namespace korvell {

class FakeDiagnostics final : public Diagnostics {
public:
  std::vector<SourceReport> list;
  OwnUsage usage;

  std::vector<SourceReport> sources() override { return list; }
  std::vector<SourceReport> figureSources() override { return list; }
  OwnUsage ownUsage() override {
    usage.cpuSeconds += 0.010;
    return usage;
  }
};

} // namespace korvell
