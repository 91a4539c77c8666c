#pragma once
// What all painting shares. Lengths are logical pixels; rectangles and hairlines land on whole device pixels,
// also at 125 to 175 %.

#include "UI/Kit/Painted.h"
#include "UI/Kit/Type.h"

#include <QPainter>
#include <QString>

namespace korvell {

/// The nearest whole device pixel, in logical ones.
double snapped(const QPainter& painter, double position);
QRectF snapped(const QPainter& painter, const QRectF& box);

void fillBox(QPainter& painter, const QRectF& box, const QColor& fill);
void fillRounded(QPainter& painter, const QRectF& box, double radius, const QColor& fill);
/// The outline lies inside the box.
void drawRounded(QPainter& painter, const QRectF& box, double radius, const QColor& fill,
                 const QColor& outline, double width = 1);
void drawOutline(QPainter& painter, const QRectF& box, double radius, const QColor& outline,
                 double width = 1);
/// One logical pixel below (right of) the point, snapped.
void drawHairline(QPainter& painter, const QPointF& from, double length, const QColor& color,
                  Qt::Orientation orientation = Qt::Horizontal);

/// One line on the vertical middle of the box by the style's line, elided when it is too long. Left and right
/// change sides with the painter's layout direction. Returns whether it was elided.
bool drawText(QPainter& painter, const QRectF& box, const Theme& theme, TextStyle style, Token token,
              const QString& text, Qt::Alignment horizontal = Qt::AlignLeft,
              Qt::TextElideMode elide = Qt::ElideRight);
/// The same in a font and colour of no style.
bool drawText(QPainter& painter, const QRectF& box, const QFont& font, const QColor& color,
              const QString& text, Qt::Alignment horizontal = Qt::AlignLeft,
              Qt::TextElideMode elide = Qt::ElideRight);
/// A text runs as its own letters do: a path in a right-to-left language is still read from its left.
Qt::LayoutDirection directionOf(const QString& text);
double textWidth(const Theme& theme, TextStyle style, const QString& text);
/// Where the baseline of a style lies when its line has this top.
double baseline(const Theme& theme, TextStyle style, double top);

} // namespace korvell
