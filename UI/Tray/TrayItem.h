#pragma once
// The item in the desktop's tray or menu bar: the form of the style that the user picked, the whole text as
// its tooltip, and a menu for desktops that show nothing else. The desktop gets a picture only when it
// changed. Main thread only; made when there is a tray (UI/Tray/TrayWatch.h).

#include "App/Model.h"
#include "Platform/UserDefaults.h"
#include "UI/Kit/Theme.h"
#include "UI/Tray/TrayPainter.h"
#include "UI/Tray/TrayWatch.h"

#include <QMenu>
#include <QRect>
#include <QSystemTrayIcon>

#include <vector>

namespace korvell {

class TrayItem {
public:
  struct Actions {
    Task openPanel, openKorvell, freeUpSpace, openSettings, quit;
  };

  TrayItem(Model& model, const UserDefaults& defaults, const Theme& theme, Actions actions);

  void setInk(TrayInk ink);
  /// The style may have been changed.
  void update();
  /// The language was changed.
  void speakAnew();
  /// Where the item is on the screen; null where the desktop does not say.
  QRect place() const { return icon_.geometry(); }

private:
  void clicked(QSystemTrayIcon::ActivationReason reason, const Task& openPanel);
  QIcon picture(const TrayForm& form) const;

  Model& model_;
  const UserDefaults& defaults_;
  const Theme& theme_;
  const bool isMenuBar_ = TrayWatch::isMenuBar();
  TrayInk ink_ = TrayInk::edged;
  std::optional<TrayForm> shown_;
  QString tooltip_;
  QMenu menu_;
  std::vector<QAction*> entries_;
  QSystemTrayIcon icon_;
  Subscription cycles_;
};

} // namespace korvell
