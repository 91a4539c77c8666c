#pragma once
// The frame of the panel that opens from the tray item: without a title bar, beside the item or the pointer,
// closed by Esc and as soon as something else is used.

#include "UI/Kit/Theme.h"

#include <QElapsedTimer>
#include <QWidget>

#include <functional>

namespace korvell {

class PanelWindow : public QWidget {
public:
  static constexpr int width = 360, mostHeight = 672, screenMargin = 48;

  PanelWindow(const Theme& theme, QWidget& content, std::function<void()> closed);

  /// `anchor` is the item's place on the screen; null where the desktop does not say, and then the pointer
  /// serves. Wayland's compositor decides for itself.
  void openAt(const QRect& anchor);

protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

private:
  void arrange();

  const Theme& theme_;
  QWidget& content_;
  const std::function<void()> closed_;
  QRect anchor_;
  const bool isRounded_;
};

/// The panel's rectangle: centred on the anchor, below it in the upper half of the screen and above it in the
/// lower, inside what is available.
QRect panelPlace(const QRect& anchor, const QSize& size, const QRect& available);

} // namespace korvell
