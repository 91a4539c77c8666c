#pragma once
// What one thread does with its time, as the system counts it: for telling a thread that is slow from one
// that the machine keeps from running.

#include "Base/Date.h"
#include "Base/Descriptor.h"

namespace korvell {

class ThreadMeter {
public:
  /// Sums since the thread began, or since an instant that means nothing; differences count.
  struct Times {
    Seconds computing{}; ///< user and system time
    Seconds waiting{};   ///< for something: an answer, a lock, a disk, or the next event
  };

  /// For the calling thread, which alone reads it.
  ThreadMeter();
  /// Time in which the thread could have run, but no processor was free for it, is in neither sum. Where the
  /// system does not count that, `waiting` stays zero: macOS, and Linux without schedstat. A few
  /// microseconds.
  Times read() const;
  /// Whether the machine has more to run at this moment than processors: then what the thread waits for may
  /// itself have waited for one.
  static bool isMachineBusy();

private:
  Descriptor counts_; ///< of this thread; none where the system has no such file
};

} // namespace korvell
