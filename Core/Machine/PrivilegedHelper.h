#pragma once
// The client of the privileged helper. Gives the sampler what the system hides from this user, and never
// costs a cycle more than its time limit, whatever the helper does: it is asked only while it is enabled (its
// status is read at most every 30 s), one question at a time, and left alone for 30 s after it failed or was
// too slow.
//
// Called on the sampler's queue; answers and statusChanged() come from any thread. Every field is under one
// lock.

#include "Helper/Shared/RusageSample.h"
#include "Platform/UsageHelper.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace korvell {

class PrivilegedHelper final {
public:
  /// Both must outlive the client; answers may come later than that.
  PrivilegedHelper(UsageHelperService& service, const Clock& clock);
  ~PrivilegedHelper();

  /// Connects and lets the helper start, so that the first cycle finds it ready. Blocks for `timeout` at
  /// most.
  void prepare(Seconds timeout);
  /// The usage of those processes that the helper could read; empty when it is unavailable, busy or slow.
  RusageSample::Map rusage(const std::vector<ProcessID>& pids, Seconds timeout);

  UsageHelperStatus status() { return service_.status(); }
  /// Turns the helper on or off; the reason of a failure is the system's.
  Outcome registerHelper();
  Outcome unregisterHelper();
  /// Forgets the status and what the helper did wrong, and connects anew.
  void statusChanged();

private:
  struct State;
  struct Ready {
    std::shared_ptr<UsageHelperConnection> connection; ///< null: nothing may be asked now
    std::uint64_t request = 0;
  };
  Ready readyConnection();
  std::shared_ptr<UsageHelperConnection> connect();
  UsageHelperAnswer ask(std::span<const ProcessID> pids, Seconds timeout);

  UsageHelperService& service_;
  const Clock& clock_;
  std::shared_ptr<State> state_; ///< shared with answers that are under way
};

} // namespace korvell
