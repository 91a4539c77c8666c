#pragma once
// One keeper at a time: the process that records, alerts and answers. It holds a lock on a file in the data
// folder for as long as it lives, however it ends; the file says which process it is and where it answers.

#include "Base/FileLock.h"
#include "Base/Result.h"
#include "Base/UserFolders.h"
#include "Shared/KeeperFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace korvell {

class KeeperLock {
public:
  /// Fails with a sentence when another process is the keeper, or when the data folder can't be written.
  static Result<KeeperLock> acquire(const UserFolders& folders);
  KeeperLock(KeeperLock&&) = default;
  KeeperLock& operator=(KeeperLock&&) = default;
  ~KeeperLock();

  /// Sleeps until nobody holds the lock, without taking it; false when it can't be waited for.
  static bool waitUntilFree(const UserFolders& folders);

  /// Tells where this keeper answers; empty for nowhere.
  void announce(const std::string& socketPath) const;

private:
  explicit KeeperLock(FileLock lock) : lock_(std::move(lock)) {}
  std::optional<FileLock> lock_;
};

/// Where a keeper listens: in the runtime folder, or in the data folder where there is none.
std::string keeperSocketPath(const UserFolders& folders);
/// In the data folder: for when the keeper of another data folder listens in the runtime folder.
std::string spareSocketPath(const UserFolders& folders);

/// What the keeper of this data folder said of itself. It may be gone: one that was killed could not say so.
struct KeeperAnnouncement {
  std::int64_t pid = 0;
  /// Empty while it does not answer yet.
  std::string socket;
  bool operator==(const KeeperAnnouncement&) const = default;
};
std::optional<KeeperAnnouncement> keeperAnnouncement(const UserFolders& folders);
/// Whether a process holds the lock, even one that hangs.
bool isKeeperRunning(const UserFolders& folders);

} // namespace korvell
