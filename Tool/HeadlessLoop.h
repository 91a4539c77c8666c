#pragma once
// The main loop of a process without an interface: runs the main queue until a signal asks to end (hang-up,
// interrupt, terminate) or quit() is called. A signal that was ignored when it began stays ignored, as
// `nohup` wants it. One at a time, on the main thread.

#include "App/EndSignals.h"
#include "Base/HostedQueue.h"

#include <optional>
#include <poll.h>
#include <vector>

namespace korvell {

/// Somebody whom descriptors wake, beside the queue.
class LoopGuest {
public:
  virtual ~LoopGuest() = default;
  /// What to wait for, asked before each wait.
  virtual std::vector<pollfd> polled() = 0;
  /// The same with what came.
  virtual void ready(const std::vector<pollfd>& polled) = 0;
};

class HeadlessLoop {
public:
  HeadlessLoop();
  HeadlessLoop(const HeadlessLoop&) = delete;
  HeadlessLoop& operator=(const HeadlessLoop&) = delete;

  Queue& main() { return main_; }
  void run();
  /// The guest stays until the loop ends.
  void invite(LoopGuest& guest) { guest_ = &guest; }
  void quit() { quit_ = true; } ///< from a task of the main queue, or from the guest
  /// Meanwhile signals do what they did before this loop was made: they end the process.
  void withoutSignals(const Task& work);

private:
  bool wait(); ///< false when a signal asked to end
  WakePipe wake_;
  HostedQueue main_;
  LoopGuest* guest_ = nullptr;
  bool quit_ = false;
  std::optional<EndSignals> signals_; ///< last: while the pipe is there that they write to
};

/// Ends the loop when nobody reads any more what is written to a pipe: at once, and not with the next line.
class ReaderWatch final : public LoopGuest {
public:
  ReaderWatch(HeadlessLoop& loop, int pipe) : loop_(loop), pipe_(pipe) { loop.invite(*this); }
  std::vector<pollfd> polled() override { return {{pipe_, 0, 0}}; }
  void ready(const std::vector<pollfd>& polled) override {
    if (polled.front().revents != 0) loop_.quit();
  }

private:
  HeadlessLoop& loop_;
  const int pipe_;
};

} // namespace korvell
