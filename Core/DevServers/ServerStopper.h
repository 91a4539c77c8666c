#pragma once
// Stops one process: politely, and after three seconds for good.
//
// Lives on the sampler's queue, where the process table is. Before each signal the start time is compared, so
// that a process which got the id of one that ended is never hit; the process's descendants end with it or
// are left to the system. Holds the stops that are under way; destroyed before its queue, on it or after the
// queue's last task.

#include "Base/Enum.h"
#include "Base/Queue.h"
#include "Platform/ProcessTable.h"

#include <functional>
#include <map>
#include <memory>

namespace korvell {

enum class StopOutcome {
  ended,  ///< it ended after the first signal
  killed, ///< it ignored the first signal and was killed
  gone,   ///< it had ended before, or its id belongs to another process: no signal was sent
  denied, ///< it belongs to somebody else
};

/// The titles are sentences about {server}.
template <>
struct EnumTable<StopOutcome> {
  using enum StopOutcome;
  static constexpr EnumCase<StopOutcome> cases[] = {
      {ended, "ended", "{server} has stopped."},
      {killed, "killed", "{server} did not stop by itself and was killed."},
      {gone, "gone", "{server} is not running any more."},
      {denied, "denied", "{server} belongs to another user."}};
};

/// True when this stop ended it.
constexpr bool hasStopped(StopOutcome outcome) {
  return outcome == StopOutcome::ended || outcome == StopOutcome::killed;
}

class ServerStopper {
public:
  static constexpr Seconds patience{3};
  using Done = std::function<void(StopOutcome)>;

  ServerStopper(Queue& queue, ProcessTable& table, ProcessControl& control)
      : queue_(queue), table_(table), control_(control) {}

  /// `done` is called once, on the queue. From the queue only.
  void stop(ProcessID pid, Date startedAt, Done done);

private:
  struct Stop {
    ProcessID pid;
    std::uint64_t start; ///< in the table's ticks
    Seconds deadline;    ///< on the queue's monotonic clock
    Done done;
    std::unique_ptr<Timer> timer;
  };
  void look(std::uint64_t number);
  void finish(std::uint64_t number, StopOutcome outcome);

  Queue& queue_;
  ProcessTable& table_;
  ProcessControl& control_;
  std::map<std::uint64_t, Stop> stops_;
  std::uint64_t nextNumber_ = 0;
};

} // namespace korvell
