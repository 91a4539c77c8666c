#include "App/KeeperLock.h"

#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Value.h"

#include <unistd.h>

namespace korvell {

namespace {

std::string lockPath(const UserFolders& folders) { return folders.data + "/" + KeeperLock::fileName; }

} // namespace

Result<KeeperLock> KeeperLock::acquire(const UserFolders& folders) {
  ensurePrivateFolder(folders.data);
  bool isHeld = false;
  auto lock = FileLock::acquire(lockPath(folders), Seconds{0}, &isHeld);
  if (lock) return KeeperLock(std::move(*lock));
  if (isHeld) return Failure{localized("Korvell is already running.")};
  return Failure{localized("Korvell can't write to its folder {folder}.", {{"folder", folders.data}})};
}

KeeperLock::~KeeperLock() {
  if (lock_) [[maybe_unused]]
    const int ignored = ftruncate(lock_->descriptor(), 0);
}

void KeeperLock::announce(const std::string& socketPath) const {
  const auto text = dumpJSON(Value::object({{"pid", std::int64_t{getpid()}}, {"socket", socketPath}})) + "\n";
  if (ftruncate(lock_->descriptor(), 0) != 0) return;
  [[maybe_unused]] const auto written = pwrite(lock_->descriptor(), text.data(), text.size(), 0);
}

std::string keeperSocketPath(const UserFolders& folders) {
  return folders.runtime.empty() ? spareSocketPath(folders) : folders.runtime + "/keeper.sock";
}

std::string spareSocketPath(const UserFolders& folders) { return folders.data + "/keeper.sock"; }

std::optional<std::string> announcedSocket(const UserFolders& folders) {
  const auto text = readFile(lockPath(folders), 4096);
  const auto announcement = text ? parseJSON(*text) : std::nullopt;
  const auto* path = announcement ? announcement->find("socket") : nullptr;
  if (!path || !path->asString()) return std::nullopt;
  return *path->asString();
}

} // namespace korvell
