#pragma once
// Tells before the machine sleeps, and holds it until what must be done before is done; and when it wakes.

#include <functional>
#include <memory>

namespace korvell {

class SleepWatch {
public:
  /// Called on a queue of the system's. While sleep is to come the machine waits until `hold` is let go, half
  /// a minute at most.
  using Handler = std::function<void(bool isAsleep, std::shared_ptr<void> hold)>;

  explicit SleepWatch(Handler handler);
  ~SleepWatch();
  SleepWatch(const SleepWatch&) = delete;
  SleepWatch& operator=(const SleepWatch&) = delete;

private:
  struct State;
  State* state_; ///< ends on its own queue
};

} // namespace korvell
