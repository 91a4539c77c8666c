#include "Core/DevServers/ServerStopper.h"

#include <utility>

namespace korvell {

namespace {

/// How often a process that was asked to end is looked at, so that the answer does not take three seconds
/// when the process took a tenth of one.
constexpr Seconds lookEvery{0.1};

} // namespace

void ServerStopper::stop(ProcessID pid, Date startedAt, Done done) {
  // First the ticks, then the date: what stands between the two readings shows in the date, and the signal
  // goes to these ticks only.
  const auto start = table_.start(pid);
  if (!start || table_.startDate(pid) != startedAt) return done(StopOutcome::gone);
  const auto outcome = control_.send(pid, *start, ProcessSignal::terminate);
  if (outcome != SignalOutcome::sent)
    return done(outcome == SignalOutcome::denied ? StopOutcome::denied : StopOutcome::gone);
  std::erase_if(stops_, [](const auto& entry) { return !entry.second.done; });
  const auto number = nextNumber_++;
  Stop stop{.pid = pid,
            .start = *start,
            .deadline = queue_.clock().monotonic() + patience,
            .done = std::move(done),
            .timer = {}};
  stop.timer = queue_.timer([this, number] { look(number); });
  stop.timer->schedule(lookEvery, lookEvery, Seconds{0.02});
  stops_.emplace(number, std::move(stop));
}

void ServerStopper::look(std::uint64_t number) {
  const auto entry = stops_.find(number);
  if (entry == stops_.end()) return;
  Stop& stop = entry->second;
  if (table_.start(stop.pid) != stop.start) return finish(number, StopOutcome::ended);
  if (queue_.clock().monotonic() < stop.deadline) return;
  const auto outcome = control_.send(stop.pid, stop.start, ProcessSignal::kill);
  finish(number, outcome == SignalOutcome::sent     ? StopOutcome::killed
                 : outcome == SignalOutcome::denied ? StopOutcome::denied
                                                    : StopOutcome::ended);
}

void ServerStopper::finish(std::uint64_t number, StopOutcome outcome) {
  // Its timer's handler is running, so the entry goes when the next stop begins.
  Stop& stop = stops_.at(number);
  stop.timer->cancel();
  const auto done = std::exchange(stop.done, {});
  done(outcome);
}

} // namespace korvell
