#pragma once
// How the application stands in the desktop beside its windows. On macOS it is an accessory of the menu bar
// until its window opens; then it is in the Dock and among the applications that Cmd+Tab goes through. On
// Linux desktops see to that by the windows themselves. Main thread only.

#include "Base/Queue.h"

#include <memory>

namespace korvell {

class Presence {
public:
  /// `reopened` is told when the desktop asks the running application to show itself: by a click on its icon
  /// in the Dock, or because it was opened again. Made after the toolkit's application object.
  explicit Presence(Task reopened);
  ~Presence();
  Presence(const Presence&) = delete;
  Presence& operator=(const Presence&) = delete;

  /// The main window is about to open, or is gone.
  void setHasWindow(bool hasWindow);
  /// Before something shows itself because the user asked for it: an accessory's windows come to the front
  /// only when the application does.
  void comeForward();
  /// Whether all windows share one menu bar.
  static bool sharesMenuBar();

private:
  struct Reopening;
  std::unique_ptr<Reopening> reopening_;
};

} // namespace korvell
