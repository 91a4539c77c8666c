#pragma once
// Time as a test tells it: the wall clock and the monotonic clock advance together or are set apart.

#include "Base/Date.h"

namespace korvell {

class FakeClock final : public Clock {
public:
  Date wall{1'800'000'000};
  Seconds elapsed{1000};

  Date now() const override { return wall; }
  Seconds monotonic() const override { return elapsed; }
  void advance(Seconds by) {
    wall = wall + by;
    elapsed += by;
  }
};

} // namespace korvell
