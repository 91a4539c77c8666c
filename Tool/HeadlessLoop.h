#pragma once
// The main loop of a process without an interface: runs the main queue until a signal asks to end (hang-up,
// interrupt, terminate) or quit() is called. A signal that this process was started to ignore, as nohup does
// with the hang-up, stays ignored. One at a time, on the main thread.

#include "Base/HostedQueue.h"

#include <array>
#include <csignal>

namespace korvell {

class HeadlessLoop {
public:
  HeadlessLoop();
  ~HeadlessLoop();
  HeadlessLoop(const HeadlessLoop&) = delete;
  HeadlessLoop& operator=(const HeadlessLoop&) = delete;

  Queue& main() { return main_; }
  void run();
  void quit() { quit_ = true; } ///< from a task of the main queue

private:
  bool wait(); ///< false when a signal asked to end
  static constexpr std::array endingSignals = {SIGHUP, SIGINT, SIGTERM};

  HostedQueue main_;
  std::array<struct sigaction, endingSignals.size()> before_{}; ///< what the signals did
  bool quit_ = false;
};

} // namespace korvell
