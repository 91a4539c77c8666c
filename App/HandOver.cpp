#include "App/HandOver.h"

#include "App/KeeperClient.h"
#include "Base/Localization.h"
#include "Base/ThreadControl.h"

#include <mutex>
#include <thread>

namespace korvell {

namespace {

constexpr Seconds answerPatience{2};

} // namespace

Result<KeeperLock> takeOver(const UserFolders& folders) {
  auto lock = KeeperLock::acquire(folders);
  if (lock || !isKeeperRunning(folders)) return lock;
  auto client = KeeperClient::connect(folders);
  const auto answer =
      client ? client->ask(Value::object({{"do", yieldAction}}), answerPatience) : std::nullopt;
  const auto* agreed = answer ? answer->find("ok") : nullptr;
  if (!agreed || agreed->asBool() != true) {
    const auto* reason = answer ? answer->find("error") : nullptr;
    return Failure{reason && reason->asString() ? *reason->asString()
                                                : localized("The running Korvell does not step back.")};
  }
  const SystemClock clock;
  const Seconds limit = clock.monotonic() + yieldGrace;
  while (!lock && clock.monotonic() < limit) lock = KeeperLock::acquire(folders);
  return lock;
}

struct LockWait::Shared {
  std::mutex mutex;
  Queue* queue; ///< null once nobody waits any more
  Task free;
};

LockWait::LockWait(Queue& queue, const UserFolders& folders, Task free)
    : shared_(std::make_shared<Shared>()) {
  shared_->queue = &queue;
  shared_->free = std::move(free);
  std::thread([shared = shared_, folders] {
    nameCurrentThread("Korvell.turn");
    // A lock whose file is not there can't be waited for; whether it can be had shows when it is asked for.
    [[maybe_unused]] const bool waited = KeeperLock::waitUntilFree(folders);
    const std::lock_guard lock(shared->mutex);
    if (shared->queue)
      shared->queue->async([shared] {
        if (shared->queue) shared->free();
      });
  }).detach();
}

LockWait::~LockWait() {
  const std::lock_guard lock(shared_->mutex);
  shared_->queue = nullptr;
}

} // namespace korvell
