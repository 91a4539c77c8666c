#pragma once
// What scrolls: a page under a quiet scroll bar in our colours.

#include "UI/Kit/Theme.h"

#include <QScrollArea>
#include <QScrollBar>

namespace korvell {

/// A thumb without a track, 6 wide in a lane of 12; wider contrast while pointed at.
class ScrollBar : public QScrollBar {
public:
  ScrollBar(const Theme& theme, Qt::Orientation orientation, QWidget* parent);
  QSize sizeHint() const override;

protected:
  void paintEvent(QPaintEvent*) override;
  void enterEvent(QEnterEvent*) override;
  void leaveEvent(QEvent*) override;

private:
  const Theme& theme_;
  Subscription themeSubscription_;
};

/// Scrolls its content up and down; the content is as wide as the area. Follows the keyboard's focus.
class ScrollArea : public QScrollArea {
public:
  ScrollArea(const Theme& theme, Token ground, QWidget* parent);
  /// Takes it over.
  void setContent(QWidget& content);

private:
  void paintGround();
  const Theme& theme_;
  Token ground_;
  Subscription themeSubscription_;
};

} // namespace korvell
