#pragma once
// The menu bar that all windows share, where the desktop has such a one: what the keyboard does, for who
// looks for it there. Entries bear the keys that the windows listen to as well; the desktop asks the menu
// first. Main thread only.

#include "Base/Queue.h"
#include "Core/Machine/Models.h"

#include <QMenuBar>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

class AppMenu {
public:
  struct Actions {
    std::vector<SidebarItem> sections; ///< in the sidebar's order; the first nine have keys
    std::function<void(SidebarItem)> open;
    Task openSettings, quit;
    Task openHelp; ///< null where none is installed
  };

  explicit AppMenu(Actions actions);

  /// The language was changed.
  void speakAnew();
  QMenuBar& bar() { return bar_; }

private:
  /// Titles are said anew by the function.
  QMenu& menu(std::function<std::string()> title);
  QAction& entry(QMenu& menu, std::function<std::string()> title, const QKeySequence& keys, Task task);

  QMenuBar bar_;
  std::vector<std::pair<QAction*, std::function<std::string()>>> titles_;
};

} // namespace korvell
