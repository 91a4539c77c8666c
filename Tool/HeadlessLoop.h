#pragma once
// The main loop of a process without an interface: runs the main queue until a signal asks to end (hang-up,
// interrupt, terminate) or quit() is called. One at a time, on the main thread.

#include "Base/HostedQueue.h"

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
  HostedQueue main_;
  bool quit_ = false;
};

} // namespace korvell
