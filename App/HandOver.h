#pragma once
// One keeper makes room for another: who wants to keep asks the keeper to step back and takes its lock; who
// stepped back waits for the lock and comes back when it is free.
//
// Any thread, but it waits: for the keeper's last minute to be written, some seconds at most.

#include "App/KeeperLock.h"
#include "Base/Queue.h"

#include <memory>

namespace korvell {

/// The action by which a keeper is asked; the application refuses it.
inline constexpr const char* yieldAction = "yield";
/// How long who stepped back leaves the lock alone, so that who asked gets it.
inline constexpr Seconds yieldGrace{5};

/// The lock, asked for where somebody has it: only to be asked of a keeper that answers, because one that
/// hangs would obey later. Fails with a sentence when the keeper does not step back.
Result<KeeperLock> takeOver(const UserFolders& folders);

/// Waits, at no cost, until nobody holds the lock, or its file is gone. `free` is called once on the queue,
/// unless this object has ended before.
class LockWait {
public:
  LockWait(Queue& queue, const UserFolders& folders, Task free);
  ~LockWait();
  LockWait(const LockWait&) = delete;
  LockWait& operator=(const LockWait&) = delete;

private:
  struct Shared;
  std::shared_ptr<Shared>
      shared_; ///< with a thread that nothing wakes but the lock, and that may stay behind
};

} // namespace korvell
