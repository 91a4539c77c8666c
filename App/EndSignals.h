#pragma once
// The signals that ask a running Korvell to end: hang-up, interrupt, terminate. One that was ignored when it
// began stays ignored, as `nohup` wants it. One object at a time.

#include "Base/SignalHandlers.h"
#include "Base/WakePipe.h"

#include <optional>

namespace korvell {

class EndSignals {
public:
  /// Wakes that pipe, which outlives this object.
  explicit EndSignals(const WakePipe& pipe);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

  /// Whether one has come since it was asked last.
  bool taken() const;

private:
  std::optional<SignalHandlers> handlers_;
};

} // namespace korvell
