#include "Tool/HeadlessLoop.h"

#include <algorithm>
#include <poll.h>

namespace korvell {

namespace {

/// Rounded up: a wake-up before the deadline would only be followed by another.
int millisecondsUntil(Seconds instant, Seconds now) {
  return int(std::clamp((instant - now).count() * 1000 + 1, 0.0, 3'600'000.0));
}

} // namespace

HeadlessLoop::HeadlessLoop() : main_("main", [this] { wake_.wake(); }) { signals_.emplace(wake_); }

void HeadlessLoop::withoutSignals(const Task& work) {
  signals_.reset();
  work();
  signals_.emplace(wake_);
}

void HeadlessLoop::run() {
  quit_ = false;
  main_.runDue();
  while (!quit_ && wait()) main_.runDue();
}

bool HeadlessLoop::wait() {
  const auto deadline = main_.nextDeadline();
  pollfd polled{wake_.descriptor(), POLLIN, 0};
  poll(&polled, 1, deadline ? millisecondsUntil(deadline->due, main_.clock().monotonic()) : -1);
  wake_.drain();
  return !signals_->taken();
}

} // namespace korvell
