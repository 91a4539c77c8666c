#pragma once
// The icons of UI/Kit/Icon.h as paths on a grid of 20, with a live area of 16 and round strokes of 1.5, drawn
// at any size in one ink. What is cut out of a filled mark (the "!" of a warning) is cut out: the ground
// shows.

#include "UI/Kit/Icon.h"
#include "UI/Kit/Painted.h"
#include "UI/Kit/Tone.h"

#include <QIcon>

namespace korvell {

/// Chevrons point to the other side in right-to-left layouts.
void drawIcon(QPainter& painter, Icon icon, const QRectF& box, const QColor& ink,
              Qt::LayoutDirection direction = Qt::LeftToRight);
/// For menus, which take pictures: at the device ratio.
QIcon iconPicture(Icon icon, int size, const QColor& ink, double deviceRatio);

/// An icon as a widget. Without a name it is decoration.
class IconLabel : public Painted {
public:
  IconLabel(const Theme& theme, Icon icon, int size, Token ink, QWidget* parent);

  void setIcon(Icon icon, Token ink);
  /// The severity mark.
  void setTone(Tone tone) { setIcon(lookOf(tone).icon, lookOf(tone).mark); }

  QSize sizeHint() const override { return {size_, size_}; }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override;

private:
  Icon icon_;
  int size_;
  Token ink_;
};

} // namespace korvell
