#include "Base/FileLock.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

namespace korvell {

std::optional<FileLock> FileLock::acquire(const std::string& path, Seconds patience, bool* isHeld,
                                          const Cancellation& cancellation) {
  if (isHeld) *isHeld = false;
  Descriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!file) return std::nullopt;
  // Asked again and again: a blocking request would hang for as long as a stopped process holds the lock.
  const SystemClock clock;
  const Seconds limit = clock.monotonic() + patience;
  while (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno == EINTR) continue;
    const bool held = errno == EWOULDBLOCK;
    if (!held || cancellation.isCancelled() || clock.monotonic() >= limit) {
      if (isHeld) *isHeld = held;
      return std::nullopt;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return FileLock(std::move(file));
}

bool FileLock::waitUntilFree(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  while (file && flock(file.get(), LOCK_SH) != 0)
    if (errno != EINTR) return false;
  return bool(file);
}

bool FileLock::isHeld(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  return file && flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace korvell
