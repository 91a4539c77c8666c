#pragma once
// Whether the application opens when the user logs in: an autostart entry on Linux, the application's own
// login item on macOS. Blocking for as long as a disk or the system's service takes; from any thread, one
// call at a time.

#include "Base/Localization.h"
#include "Base/Result.h"

namespace korvell {

class LoginItem {
public:
  virtual ~LoginItem() = default;
  /// False also where the desktop or the user has switched the entry off.
  virtual bool isEnabled() const = 0;
  virtual Outcome setEnabled(bool enabled) = 0;
  /// Whether Korvell has left anything there, enabled or not.
  virtual bool isThere() const { return isEnabled(); }
  /// Takes away what is there.
  virtual Outcome remove() { return setEnabled(false); }
};

class NoLoginItem final : public LoginItem {
public:
  bool isEnabled() const override { return false; }
  Outcome setEnabled(bool) override {
    return Failure{localized("This system has no place for what opens at login.")};
  }
};

} // namespace korvell
