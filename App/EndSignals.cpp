#include "App/EndSignals.h"

#include <atomic>

namespace korvell {

namespace {

// Signal handlers know no object, so what they touch stands here.
std::atomic<const WakePipe*> signalPipe{nullptr};
std::atomic<bool> signalled{false};
static_assert(std::atomic<const WakePipe*>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

void askToEnd(int) {
  signalled = true;
  if (const auto* pipe = signalPipe.load()) pipe->wake();
}

} // namespace

EndSignals::EndSignals(const WakePipe& pipe) {
  signalPipe = &pipe;
  signalled = false;
  handlers_.emplace(std::initializer_list<int>{SIGHUP, SIGINT, SIGTERM}, askToEnd);
}

EndSignals::~EndSignals() {
  handlers_.reset();
  signalPipe = nullptr;
}

bool EndSignals::taken() const { return signalled.exchange(false); }

} // namespace korvell
