#pragma once
// What looks for newer copies of Korvell and installs them, where this copy came with something that does. A
// copy that the system's packages keep up to date has none. Main queue only; nothing here blocks.

#include "Base/Queue.h"

namespace korvell {

class Updater {
public:
  virtual ~Updater() = default;
  /// Whether it looks by itself from time to time.
  virtual bool automaticallyChecks() const = 0;
  virtual void setAutomaticallyChecks(bool on) = 0;
  /// Whether a check may be started now: not while one is under way.
  virtual bool canCheck() const = 0;
  /// Looks now; it tells the user by itself what it found.
  virtual void check() = 0;
  /// `changed` is told when canCheck() has changed. Replaces what was told before; null: nobody.
  virtual void onChange(Task changed) = 0;
};

} // namespace korvell
