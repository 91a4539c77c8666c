#pragma once
// A lock between processes, and between threads that each take their own: held on an open file until the
// object goes away or the process ends, however it ends. The file is made with mode 0600 and stays there.

#include "Base/Cancellation.h"
#include "Base/Date.h"
#include "Base/Descriptor.h"

#include <optional>
#include <string>

namespace korvell {

class FileLock {
public:
  /// Tries until `patience` is over or the caller cancels; zero asks once. Nothing when someone else holds
  /// the lock (`isHeld` is true then) or the file can't be made.
  static std::optional<FileLock> acquire(const std::string& path, Seconds patience, bool* isHeld = nullptr,
                                         const Cancellation& cancellation = {});

  /// Whether someone holds the lock; a file that is not there is not made. Holds it for a moment itself.
  static bool isHeld(const std::string& path);

  /// Sleeps for as long as someone holds the lock; false when the file is not there or can't be waited for.
  static bool waitUntilFree(const std::string& path);

  int descriptor() const { return file_.get(); }

private:
  explicit FileLock(Descriptor file) : file_(std::move(file)) {}
  Descriptor file_;
};

} // namespace korvell
