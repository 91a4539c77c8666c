#pragma once
// One line that says how far a long command is. Drawn on a terminal only, at most ten times a second, and
// taken away when it is done.

#include "Tool/Terminal.h"

#include "Base/Date.h"

#include <string>

namespace korvell {

class Progress {
public:
  Progress(Terminal& terminal, const Clock& clock) : terminal_(terminal), clock_(clock) {}
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// `fraction` from 0 to 1; negative where the end is not known.
  void show(double fraction, std::string_view text);
  void clear();

private:
  Terminal& terminal_;
  const Clock& clock_;
  Seconds lastDrawn_{-1};
  bool drawn_ = false;
};

} // namespace korvell
