#include "UI/Kit/Paint.h"

#include <QFontMetricsF>
#include <QPaintDevice>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

/// Device pixels a logical one of this painter: the device's ratio and whatever the painter is scaled by.
double ratioOf(const QPainter& painter) { return painter.deviceTransform().m11(); }

} // namespace

double snapped(const QPainter& painter, double position) {
  auto ratio = std::abs(ratioOf(painter));
  return ratio > 0 ? std::round(position * ratio) / ratio : position;
}

QRectF snapped(const QPainter& painter, const QRectF& box) {
  QPointF from(snapped(painter, box.left()), snapped(painter, box.top()));
  QPointF to(snapped(painter, box.right()), snapped(painter, box.bottom()));
  return {from, to};
}

Qt::LayoutDirection directionOf(const QString& text) {
  return text.isRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight;
}

void fillBox(QPainter& painter, const QRectF& box, const QColor& fill) {
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing, false);
  painter.fillRect(snapped(painter, box), fill);
  painter.restore();
}

void fillRounded(QPainter& painter, const QRectF& box, double radius, const QColor& fill) {
  auto corner = std::min({radius, box.width() / 2, box.height() / 2});
  painter.save();
  painter.setPen(Qt::NoPen);
  painter.setBrush(fill);
  painter.drawRoundedRect(snapped(painter, box), corner, corner);
  painter.restore();
}

void drawRounded(QPainter& painter, const QRectF& box, double radius, const QColor& fill,
                 const QColor& outline, double width) {
  fillRounded(painter, box.adjusted(width / 2, width / 2, -width / 2, -width / 2), radius, fill);
  drawOutline(painter, box, radius, outline, width);
}

void drawOutline(QPainter& painter, const QRectF& box, double radius, const QColor& outline, double width) {
  // A line of whole device pixels whose middle lies half of it inside the box.
  auto ratio = std::abs(ratioOf(painter));
  auto line = std::max(1.0, std::round(width * ratio)) / ratio;
  auto middle = snapped(painter, box).adjusted(line / 2, line / 2, -line / 2, -line / 2);
  auto corner = std::clamp(radius - line / 2, 0.0, std::min(middle.width(), middle.height()) / 2);
  painter.save();
  painter.setPen(QPen(outline, line));
  painter.setBrush(Qt::NoBrush);
  painter.drawRoundedRect(middle, corner, corner);
  painter.restore();
}

void drawHairline(QPainter& painter, const QPointF& from, double length, const QColor& color,
                  Qt::Orientation orientation) {
  auto ratio = std::abs(ratioOf(painter));
  auto width = std::max(1.0, std::floor(ratio + 0.25)) / ratio;
  QPointF start(snapped(painter, from.x()), snapped(painter, from.y()));
  auto size = orientation == Qt::Horizontal ? QSizeF(length, width) : QSizeF(width, length);
  fillBox(painter, QRectF(start, size), color);
}

bool drawText(QPainter& painter, const QRectF& box, const Theme& theme, TextStyle style, Token token,
              const QString& text, Qt::Alignment horizontal, Qt::TextElideMode elide) {
  return drawText(painter, box, fontOf(theme, style), theme.color(token), text, horizontal, elide);
}

bool drawText(QPainter& painter, const QRectF& box, const QFont& font, const QColor& color,
              const QString& text, Qt::Alignment horizontal, Qt::TextElideMode elide) {
  QFontMetricsF metrics(font);
  auto shown = text;
  // Widths are sums of fractions: what fits but for a rounding error is not cut.
  if (metrics.horizontalAdvance(text) > box.width() + 0.5)
    shown = metrics.elidedText(text, elide, box.width());
  auto width = metrics.horizontalAdvance(shown);
  auto alignment = QStyle::visualAlignment(painter.layoutDirection(), horizontal);
  auto left = box.left();
  if (alignment & Qt::AlignRight) left = box.right() - width;
  if (alignment & Qt::AlignHCenter) left += (box.width() - width) / 2;
  painter.save();
  painter.setFont(font);
  painter.setPen(color);
  painter.setLayoutDirection(directionOf(text));
  painter.drawText(QPointF(left, box.top() + (box.height() + metrics.ascent() - metrics.descent()) / 2),
                   shown);
  painter.restore();
  return shown != text;
}

double textWidth(const Theme& theme, TextStyle style, const QString& text) {
  return QFontMetricsF(fontOf(theme, style)).horizontalAdvance(text);
}

double baseline(const Theme& theme, TextStyle style, double top) {
  QFontMetricsF metrics(fontOf(theme, style));
  return top + (lineHeight(theme, style) + metrics.ascent() - metrics.descent()) / 2;
}

} // namespace korvell
