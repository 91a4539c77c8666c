#pragma once
// The main loop of a process without an interface: runs the main queue until a signal asks to end (hang-up,
// interrupt, terminate) or quit() is called. A signal that was ignored when it began stays ignored, as
// `nohup` wants it. One at a time, on the main thread.

#include "App/EndSignals.h"
#include "Base/HostedQueue.h"

#include <optional>

namespace korvell {

class HeadlessLoop {
public:
  HeadlessLoop();
  HeadlessLoop(const HeadlessLoop&) = delete;
  HeadlessLoop& operator=(const HeadlessLoop&) = delete;

  Queue& main() { return main_; }
  void run();
  void quit() { quit_ = true; } ///< from a task of the main queue
  /// Meanwhile signals do what they did before this loop was made: they end the process.
  void withoutSignals(const Task& work);

private:
  bool wait(); ///< false when a signal asked to end
  WakePipe wake_;
  HostedQueue main_;
  bool quit_ = false;
  std::optional<EndSignals> signals_; ///< last: while the pipe is there that they write to
};

} // namespace korvell
