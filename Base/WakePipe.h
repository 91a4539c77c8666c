#pragma once
// Ends a poll(2): from any thread and from signal handlers. Wakings that come before the poller has drained
// them count as one.

#include "Base/Descriptor.h"

namespace korvell {

class WakePipe {
public:
  /// Neither end is handed to other programs. False afterwards when the process has no descriptors left.
  WakePipe();
  explicit operator bool() const { return bool(read_); }

  /// To be polled for POLLIN.
  int descriptor() const { return read_.get(); }
  /// Leaves errno as it was.
  void wake() const;
  /// Until the next wake() there is nothing to poll. Does not block.
  void drain() const;

private:
  Descriptor read_, write_;
};

} // namespace korvell
