#pragma once
// Children that sleep, or that wake often enough to have used some CPU time in every cycle.

#include <sys/types.h>
#include <vector>

namespace korvell {

class Herd {
public:
  enum class Kind { sleeping, active };
  Herd(int count, Kind kind);
  ~Herd(); ///< ends and reaps them all
  Herd(const Herd&) = delete;
  Herd& operator=(const Herd&) = delete;

  /// Has every active child use a little CPU time, and returns when they have.
  void stir();
  /// Ends this many and starts as many anew.
  void replace(int count);

private:
  pid_t start() const;

  Kind kind_;
  std::vector<pid_t> children_;
  int stirred_[2] = {-1, -1}; ///< a pipe into which every child writes a byte when it was stirred
};

} // namespace korvell
