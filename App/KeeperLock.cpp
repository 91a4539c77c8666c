#include "App/KeeperLock.h"

#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Value.h"

#include <unistd.h>

namespace korvell {

namespace {

/// Never cut to nothing: on a full disk the file keeps the room that it has.
void rewrite(int file, std::string_view text) {
  if (pwrite(file, text.data(), text.size(), 0) == ssize_t(text.size())) [[maybe_unused]]
    const int ignored = ftruncate(file, off_t(text.size()));
}

} // namespace

Result<KeeperLock> KeeperLock::acquire(const UserFolders& folders) {
  ensurePrivateFolder(folders.data);
  // Who only looks whether the lock is held has it for a moment.
  constexpr Seconds patience{0.05};
  bool isHeld = false;
  auto lock = FileLock::acquire(keeperLockPath(folders), patience, &isHeld);
  if (lock) {
    KeeperLock keeper(std::move(*lock));
    keeper.announce({});
    return keeper;
  }
  if (isHeld) return Failure{localized("Korvell is already running.")};
  return Failure{localized("Korvell can't write to its folder {folder}.", {{"folder", folders.data}})};
}

bool KeeperLock::waitUntilFree(const UserFolders& folders) {
  return FileLock::waitUntilFree(keeperLockPath(folders));
}

KeeperLock::~KeeperLock() {
  if (lock_) rewrite(lock_->descriptor(), "\n");
}

void KeeperLock::announce(const std::string& socketPath) const {
  const auto text = dumpJSON(Value::object({{"pid", std::int64_t{getpid()}}, {"socket", socketPath}})) + "\n";
  rewrite(lock_->descriptor(), text);
}

std::string keeperSocketPath(const UserFolders& folders) {
  return folders.runtime.empty() ? spareSocketPath(folders) : folders.runtime + "/keeper.sock";
}

std::string spareSocketPath(const UserFolders& folders) { return folders.data + "/keeper.sock"; }

std::optional<KeeperAnnouncement> keeperAnnouncement(const UserFolders& folders) {
  const auto text = readFile(keeperLockPath(folders), 4096);
  const auto announcement = text ? parseJSON(*text) : std::nullopt;
  const auto* pid = announcement ? announcement->find("pid") : nullptr;
  const auto* socket = announcement ? announcement->find("socket") : nullptr;
  if (!pid || !socket || !socket->asString()) return std::nullopt;
  return KeeperAnnouncement{pid->asInt().value_or(0), *socket->asString()};
}

bool isKeeperRunning(const UserFolders& folders) { return FileLock::isHeld(keeperLockPath(folders)); }

} // namespace korvell
