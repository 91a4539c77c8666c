#include "Tool/HeadlessLoop.h"

#include <algorithm>

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
  auto polled = guest_ ? guest_->polled() : std::vector<pollfd>();
  polled.push_back({wake_.descriptor(), POLLIN, 0});
  const int count = poll(polled.data(), nfds_t(polled.size()),
                         deadline ? millisecondsUntil(deadline->due, main_.clock().monotonic()) : -1);
  wake_.drain();
  if (signals_->taken()) return false;
  polled.pop_back();
  if (guest_ && count > 0) guest_->ready(polled);
  return true;
}

} // namespace korvell
