#pragma once
// The widget's window: without a frame, below all others, where the user dragged it. It reads the document
// when the folder says that there is a new one, and otherwise sleeps until the document gets old.

#include "Platform/LoginItem.h"
#include "UI/Desktop/DesktopLook.h"
#include "Widget/WidgetFace.h"
#include "Widget/WidgetFeed.h"
#include "Widget/WidgetPlace.h"

#include <QFileSystemWatcher>
#include <QTimer>

namespace korvell {

class WidgetWindow : public QWidget {
public:
  /// All of them outlive the window.
  struct Parts {
    const UserFolders& folders;
    Theme& theme;
    WidgetFeed& feed;
    LoginItem& loginItem;
    std::function<void()> openHelp; ///< null where none is installed
  };

  WidgetWindow(Parts parts, WidgetPart::Open open);

protected:
  void contextMenuEvent(QContextMenuEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void moveEvent(QMoveEvent*) override;
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;

private:
  void readDocument();
  void showPage();
  void setSize(WidgetSize size);
  /// Where it was dragged to, as far as the screen has room there, or into the corner.
  void putInPlace();
  /// Takes over where it was dragged to since it was put.
  void notePlace();
  void store();
  void switchLogin(bool enabled);
  void tell(const std::string& sentence);

  const Parts parts_;
  WidgetPlace place_;
  std::optional<QPoint> put_; ///< where this window put itself; elsewhere it was dragged to
  WidgetFace face_;
  QFileSystemWatcher watcher_;
  QTimer settling_;                 ///< a new document comes with several changes of its folder
  QTimer ageing_;                   ///< until the document is old
  QTimer remembering_;              ///< until a dragged window stands still
  std::optional<QPoint> pressedAt_; ///< until it became a drag
};

} // namespace korvell
