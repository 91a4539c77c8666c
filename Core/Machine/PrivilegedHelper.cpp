#include "Core/Machine/PrivilegedHelper.h"

#include <unordered_set>

namespace korvell {

namespace {

constexpr Seconds statusInterval{30};
constexpr Seconds backOff{30};

} // namespace

struct PrivilegedHelper::State {
  std::mutex lock;
  std::shared_ptr<UsageHelperConnection> connection;
  std::uint64_t connections = 0; ///< made so far; tells whether the one that was lost is still ours
  bool enabled = false;
  std::optional<Seconds> nextStatusCheck; ///< monotonic; none: at once
  std::optional<Seconds> retryAfter;
  std::uint64_t inFlight = 0; ///< the number of the request that is waited for, 0 for none
  std::uint64_t requests = 0;
  UsageHelperAnswer answer;
  bool failed = false;

  /// An answer arrived; one that nobody waits for any more is dropped.
  void take(std::uint64_t request, UsageHelperAnswer&& received) {
    const std::lock_guard guard(lock);
    if (request != inFlight) return;
    inFlight = 0;
    failed = !received;
    answer = std::move(received);
  }
};

PrivilegedHelper::PrivilegedHelper(UsageHelperService& service, const Clock& clock)
    : service_(service), clock_(clock), state_(std::make_shared<State>()) {}

PrivilegedHelper::~PrivilegedHelper() { statusChanged(); }

/// With the lock held.
std::shared_ptr<UsageHelperConnection> PrivilegedHelper::connect() {
  auto& state = *state_;
  const auto number = ++state.connections;
  state.connection = service_.connect([weak = std::weak_ptr(state_), number] {
    const auto state = weak.lock();
    if (!state) return;
    std::shared_ptr<UsageHelperConnection> lost; // destroyed without the lock
    const std::lock_guard guard(state->lock);
    if (state->connections == number) lost = std::move(state->connection);
  });
  return state.connection;
}

/// A connection on which a request may be sent now; the request is in flight then.
PrivilegedHelper::Ready PrivilegedHelper::readyConnection() {
  auto& state = *state_;
  const auto now = clock_.monotonic();
  const std::lock_guard guard(state.lock);
  if (!state.nextStatusCheck || now >= *state.nextStatusCheck) {
    state.enabled = service_.status() == UsageHelperStatus::enabled;
    state.nextStatusCheck = now + statusInterval;
  }
  if (!state.enabled || state.inFlight != 0 || (state.retryAfter && now < *state.retryAfter)) return {};
  const auto connection = state.connection ? state.connection : connect();
  if (!connection) {
    state.retryAfter = now + backOff;
    return {};
  }
  state.inFlight = ++state.requests;
  state.answer.reset();
  state.failed = false;
  return {connection, state.inFlight};
}

UsageHelperAnswer PrivilegedHelper::ask(std::span<const ProcessID> pids, Seconds timeout) {
  const auto [connection, request] = readyConnection();
  if (!connection) return std::nullopt;
  auto& state = *state_;
  connection->request(pids, [weak = std::weak_ptr(state_), number = request](UsageHelperAnswer answer) {
    if (const auto state = weak.lock()) state->take(number, std::move(answer));
  });
  connection->await(timeout);

  const std::lock_guard guard(state.lock);
  const bool late = state.inFlight == request;
  if (late) state.inFlight = 0;
  if (late || state.failed) state.retryAfter = clock_.monotonic() + backOff;
  return std::exchange(state.answer, std::nullopt);
}

void PrivilegedHelper::prepare(Seconds timeout) { ask({}, timeout); }

RusageSample::Map PrivilegedHelper::rusage(const std::vector<ProcessID>& pids, Seconds timeout) {
  if (pids.empty()) return {};
  const auto answer = ask(pids, timeout);
  if (!answer) return {};
  auto samples = RusageSample::decode(*answer);
  const std::unordered_set<ProcessID> asked(pids.begin(), pids.end());
  std::erase_if(samples, [&asked](const auto& entry) { return !asked.contains(entry.first); });
  return samples;
}

Outcome PrivilegedHelper::registerHelper() {
  auto outcome = service_.enable();
  if (outcome) statusChanged();
  return outcome;
}

Outcome PrivilegedHelper::unregisterHelper() {
  auto outcome = service_.disable();
  if (outcome) statusChanged();
  return outcome;
}

void PrivilegedHelper::statusChanged() {
  std::shared_ptr<UsageHelperConnection> dropped; // destroyed without the lock
  const std::lock_guard guard(state_->lock);
  state_->nextStatusCheck.reset();
  state_->retryAfter.reset();
  ++state_->connections;
  dropped = std::move(state_->connection);
}

} // namespace korvell
