#pragma once
// What must hold for any input; a fuzzer takes an abort for a finding.

#include <cstdlib>

inline void expect(bool holds) {
  if (!holds) std::abort();
}
