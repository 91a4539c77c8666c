#pragma once
// The ring around what has the keyboard's focus: 2 px of accent, 2 px outside. It lies over the nearest
// widget above the ringed one that has the room, so that controls and what holds them close need none of
// their own; what scrolls keeps it inside.

#include "UI/Kit/Theme.h"

#include <QWidget>

#include <functional>
#include <vector>

namespace korvell {

/// Whether focus came by the keyboard; what becomes active again (a window, after a menu) keeps what it had.
bool isKeyboard(Qt::FocusReason reason);

/// Tab goes through these and what is in them, one after the other. The toolkit goes by when each was made:
/// to be called again when another one was. Null stands for none.
void orderTabs(const std::vector<QWidget*>& parts);

class FocusRing : public QWidget {
public:
  /// What the ring goes round, in the widget; asked again when the widget has moved or grown.
  using Shape = std::function<QRectF()>;

  /// Shows the ring until hide(): to be called from the widget's focusInEvent.
  static void show(QWidget& around, Shape shape, double corner, const Theme& theme);
  /// Around the whole widget.
  static void show(QWidget& around, double corner, const Theme& theme);
  /// From its focusOutEvent.
  static void hide(QWidget& around);
  static bool isShown(const QWidget& around);

protected:
  void paintEvent(QPaintEvent*) override;
  bool eventFilter(QObject*, QEvent*) override;

private:
  static FocusRing* of(const QWidget& around);
  FocusRing(QWidget& around, Shape shape, double corner, const Theme& theme, QWidget& over);
  void follow();

  QWidget* around_; ///< the ring ends with it
  Shape shape_;
  double corner_;
  const Theme& theme_;
};

} // namespace korvell
