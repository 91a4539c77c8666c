#include "UI/Tray/TrayPainter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr int sizes[] = {16, 22, 24, 32, 44, 48, 64};

/// A form's measures on the grid that it is drawn for.
struct Grid {
  int size;
  double heart, heartLine; ///< scale of the 16 pixel heart, and its line in those units
  double scoreText, scoreBase;
  QRectF scoreBar;
  double numbers, numberBase[2];
  int bars;
  double barWidth, barStep, barBase, barHeight;
  QRectF gauge;
  double gaugeLine;
};

constexpr double gaugeRadius = 1;
const Grid grids[] = {
    {16, 1, 1.5, 11.5, 9.6, {2, 12.5, 12, 2}, 0, {0, 0}, 5, 1, 2, 15, 14, {12.5, 1.5, 2, 13}, 1},
    {22,
     1.375,
     1.45,
     14.5,
     13.2,
     {3, 17, 16, 2.5},
     10.5,
     {9.4, 20.2},
     5,
     2,
     3,
     19,
     16,
     {17.5, 3.5, 3, 15},
     1},
    {24, 1.5, 1.42, 16, 14.5, {3, 18.5, 18, 3}, 11.5, {10.4, 22.2}, 6, 2, 3, 21, 18, {19.5, 3.5, 3, 17}, 1},
};

/// The grid that fits a size without fractions, or the finest.
const Grid& gridFor(int size) {
  for (const auto& grid : grids)
    if (size % grid.size == 0 && size / grid.size <= 2) return grid;
  return grids[2];
}

class Pen {
public:
  Pen(QPainter& painter, const TrayForm& form, const Grid& grid, const QColor& ink)
      : painter_(painter), form_(form), grid_(grid), ink_(ink), quiet_(ink) {
    quiet_.setAlphaF(float(0.28 * ink.alphaF()));
  }

  void draw() const {
    if (form_.style == MenuBarStyle::icon) return heart(form_.isFilled);
    if (!form_.score) return dash();
    if (form_.style == MenuBarStyle::score) return score();
    if (form_.style == MenuBarStyle::graphs) return graphs();
    if (grid_.numbers > 0) return numbers();
    gauges();
  }

private:
  void heart(bool isFilled) const {
    QPainterPath path(QPointF(8, 13.9));
    path.cubicTo(8, 13.9, 1.6, 10.3, 1.6, 5.7);
    constexpr double radius = 3.35;
    // Two arcs of that radius, from the side to the notch and from the notch to the other side.
    arcTo(path, {1.6, 5.7}, {8, 4.3}, radius);
    arcTo(path, {8, 4.3}, {14.4, 5.7}, radius);
    path.cubicTo(14.4, 10.3, 8, 13.9, 8, 13.9);
    path.closeSubpath();
    painter_.save();
    painter_.scale(grid_.heart, grid_.heart);
    painter_.setPen(QPen(ink_, grid_.heartLine, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter_.setBrush(isFilled ? QBrush(ink_) : QBrush(Qt::NoBrush));
    painter_.drawPath(path);
    painter_.restore();
  }

  /// Clockwise on the screen, the shorter way round.
  static void arcTo(QPainterPath& path, QPointF from, QPointF to, double radius) {
    const QPointF half = (to - from) / 2, middle = from + half;
    const double length = std::hypot(half.x(), half.y());
    const double height = std::sqrt(std::max(0.0, radius * radius - length * length));
    const QPointF center = middle + QPointF(-half.y(), half.x()) / length * height;
    const double start = -std::atan2(from.y() - center.y(), from.x() - center.x());
    double end = -std::atan2(to.y() - center.y(), to.x() - center.x());
    if (end > start) end -= 2 * M_PI;
    const QRectF box(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius);
    path.arcTo(box, start * 180 / M_PI, (end - start) * 180 / M_PI);
  }

  void text(const QString& words, double size, double base, double tracking) const {
    auto font = QGuiApplication::font();
    font.setPixelSize(100); // measured large, so that small sizes are not rounded to whole pixels
    font.setWeight(QFont::Bold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, tracking * 100);
    QPainterPath path;
    path.addText(0, 0, font, words);
    const double width = QFontMetricsF(font).horizontalAdvance(words) - tracking * 100;
    painter_.save();
    painter_.translate(grid_.size / 2.0 - width * size / 200, base);
    painter_.scale(size / 100, size / 100);
    painter_.fillPath(path, ink_);
    painter_.restore();
  }

  void fill(const QRectF& box, double radius, const QColor& color) const {
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(color);
    painter_.drawRoundedRect(box, radius, radius);
  }

  void score() const {
    const bool isWide = *form_.score == 100; // three digits in the room of two
    const double size = grid_.scoreText * (isWide ? 0.7 : 1);
    const double lift = isWide ? grid_.scoreText * 0.09 : 0; // centred in the digits' height
    text(QString::number(*form_.score), size, grid_.scoreBase - lift, -0.03);
    const auto& bar = grid_.scoreBar;
    const double radius = bar.height() / 2;
    fill(bar, radius, quiet_);
    auto part = bar;
    part.setWidth(bar.width() * std::clamp(*form_.score, 0, 100) / 100);
    fill(part, radius, ink_);
  }

  void dash() const {
    const double width = grid_.size / 2.0;
    fill({(grid_.size - width) / 2, grid_.size / 2.0 - 1, width, 2}, 1, ink_);
  }

  void numbers() const {
    const int values[] = {form_.cpu, form_.memory};
    for (int i = 0; i < 2; ++i) {
      const int shown = std::clamp(values[i], 0, 100);
      text(QString::number(shown), grid_.numbers * (shown == 100 ? 0.8 : 1), grid_.numberBase[i], 0);
    }
  }

  void gauges() const {
    constexpr double left[] = {2, 8.5}, top = 1, width = 5, height = 14, radius = 1.2;
    const int values[] = {form_.cpu, form_.memory};
    for (int i = 0; i < 2; ++i) {
      const double part = height * std::clamp(values[i], 0, 100) / 100;
      fill({left[i], top, width, height}, radius, quiet_);
      fill({left[i], top + height - part, width, part}, std::min(radius, part / 2), ink_);
    }
  }

  void graphs() const {
    const auto count = std::min<std::size_t>(form_.bars.size(), std::size_t(grid_.bars));
    const auto* newest = form_.bars.data() + (form_.bars.size() - count);
    for (std::size_t i = 0; i < count; ++i) {
      const double height =
          std::max(1.0, std::round(grid_.barHeight * std::clamp(newest[i], 0.0, 100.0) / 100));
      painter_.fillRect(QRectF(1 + double(i) * grid_.barStep, grid_.barBase - height, grid_.barWidth, height),
                        ink_);
    }
    painter_.setPen(QPen(ink_, grid_.gaugeLine));
    painter_.setBrush(Qt::NoBrush);
    painter_.drawRoundedRect(grid_.gauge, gaugeRadius, gaugeRadius);
    const double part = std::round(grid_.gauge.height() * std::clamp(form_.memory, 0, 100) / 100);
    auto box = grid_.gauge;
    box.setTop(box.bottom() - part);
    painter_.fillRect(box, ink_);
  }

  QPainter& painter_;
  const TrayForm& form_;
  const Grid& grid_;
  QColor ink_, quiet_;
};

constexpr double ordinarySize = 22; // of an item in a bar, in pixels
constexpr QRgb darkInk = 0xFF1A1C1E, lightInk = 0xFFF4F5F5;

void drawIn(QPainter& painter, const TrayForm& form, const Grid& grid, QRgb ink) {
  Pen(painter, form, grid, QColor::fromRgba(ink)).draw();
}

/// Painted around itself so that it stands out on any ground: one pixel away in a bar of ordinary height, as
/// far in proportion where the picture is larger, because many panels take the largest and shrink it.
void drawEdge(QPainter& painter, const TrayForm& form, const Grid& grid, int size) {
  QImage edge(size, size, QImage::Format_ARGB32_Premultiplied);
  edge.fill(Qt::transparent);
  QPainter inner(&edge);
  inner.setRenderHint(QPainter::Antialiasing);
  const double scale = double(size) / grid.size, away = std::max(1.0, size / ordinarySize);
  for (const auto& [x, y] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}}) {
    inner.resetTransform();
    inner.translate(x * away, y * away);
    inner.scale(scale, scale);
    drawIn(inner, form, grid, darkInk);
  }
  inner.end();
  painter.save();
  painter.resetTransform();
  painter.setOpacity(0.55);
  painter.drawImage(0, 0, edge);
  painter.restore();
}

} // namespace

QImage trayImage(const TrayForm& form, int size, TrayInk ink) {
  const auto& grid = gridFor(size);
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  const double scale = double(size) / grid.size;
  painter.scale(scale, scale);
  if (ink == TrayInk::edged) drawEdge(painter, form, grid, size);
  drawIn(painter, form, grid, ink == TrayInk::dark ? darkInk : lightInk);
  return image;
}

QIcon trayIcon(const TrayForm& form, TrayInk ink) {
  QIcon icon;
  for (const int size : sizes) icon.addPixmap(QPixmap::fromImage(trayImage(form, size, ink)));
  return icon;
}

} // namespace korvell
