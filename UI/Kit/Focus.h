#pragma once
// The ring around what has the keyboard's focus: 2 px of accent, 2 px outside. It lies beside the widget that
// it rings, in that one's parent, so that the widget needs no room for it; the parent needs 4 px around.

#include "UI/Kit/Theme.h"

#include <QPointer>
#include <QWidget>

namespace korvell {

/// Whether focus came by the keyboard; what becomes active again (a window, after a menu) keeps what it had.
bool isKeyboard(Qt::FocusReason reason);

class FocusRing : public QWidget {
public:
  /// Shows the ring around `shape` of the widget until hide(): to be called from its focusInEvent.
  static void show(QWidget& around, const QRectF& shape, double corner, const Theme& theme);
  /// From its focusOutEvent.
  static void hide(QWidget& around);
  static bool isShown(const QWidget& around);

protected:
  void paintEvent(QPaintEvent*) override;
  bool eventFilter(QObject*, QEvent*) override;

private:
  static FocusRing* of(const QWidget& around);
  FocusRing(QWidget& around, const QRectF& shape, double corner, const Theme& theme);
  void follow();

  QPointer<QWidget> around_;
  QMarginsF inset_; ///< of the shape in the widget
  double corner_;
  const Theme& theme_;
};

} // namespace korvell
