#include "Tool/HeadlessLoop.h"

#include <algorithm>
#include <atomic>
#include <poll.h>

namespace korvell {

namespace {

// Signal handlers know no object, so what they touch stands here.
std::atomic<const WakePipe*> signalPipe{nullptr};
std::atomic<bool> endSignalled{false};
static_assert(std::atomic<const WakePipe*>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void askToEnd(int) {
  endSignalled = true;
  if (const auto* pipe = signalPipe.load()) pipe->wake();
}

/// Rounded up: a wake-up before the deadline would only be followed by another.
int millisecondsUntil(Seconds instant, Seconds now) {
  return int(std::clamp((instant - now).count() * 1000 + 1, 0.0, 3'600'000.0));
}

} // namespace

HeadlessLoop::HeadlessLoop() : main_("main", [this] { wake_.wake(); }) {
  signalPipe = &wake_;
  endSignalled = false;
  signals_.emplace(std::initializer_list<int>{SIGHUP, SIGINT, SIGTERM}, askToEnd);
}

HeadlessLoop::~HeadlessLoop() {
  signals_.reset();
  signalPipe = nullptr;
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
  return !endSignalled.exchange(false);
}

} // namespace korvell
