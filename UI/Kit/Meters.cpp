#include "UI/Kit/Meters.h"

#include "UI/Kit/Paint.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr double dotRadius = 2.5;
constexpr int glideMilliseconds = 200;
constexpr double barCorner = 2;

/// Unbroken stretches of a series as lines in its box.
std::vector<QPolygonF> stretches(const QRectF& box, const std::vector<std::optional<double>>& values,
                                 double top) {
  auto step = box.width() / double(Sparkline::points - 1);
  auto count = std::min(values.size(), Sparkline::points);
  auto first = values.size() - count;
  std::vector<QPolygonF> found;
  auto isOpen = false;
  for (std::size_t i = 0; i < count; ++i) {
    const auto& value = values[first + i];
    if (!value) {
      isOpen = false;
      continue;
    }
    if (!std::exchange(isOpen, true)) found.emplace_back();
    auto share = top > 0 ? std::clamp(*value / top, 0.0, 1.0) : 0;
    found.back() << QPointF(box.right() - step * double(count - 1 - i), box.bottom() - share * box.height());
  }
  return found;
}

void fillBelow(QPainter& painter, const QPolygonF& line, double bottom) {
  auto area = line;
  area << QPointF(line.last().x(), bottom) << QPointF(line.first().x(), bottom);
  painter.drawPolygon(area);
}

} // namespace

void drawSparkline(QPainter& painter, const QRectF& box, const Theme& theme, Token line,
                   const std::vector<std::optional<double>>& values, double top) {
  painter.save();
  auto width = theme.lineWidth();
  // The dot and the line's thickness stay inside the box.
  auto inner = box.adjusted(width / 2, dotRadius, -dotRadius, -width / 2);
  auto lines = stretches(inner, values, top);
  painter.setPen(Qt::NoPen);
  painter.setBrush(theme.color(fillOf(line)));
  for (const auto& stretch : lines) fillBelow(painter, stretch, inner.bottom());
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(theme.color(line), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  for (const auto& stretch : lines) painter.drawPolyline(stretch);
  if (!values.empty() && values.back()) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(line));
    painter.drawEllipse(lines.back().last(), dotRadius, dotRadius);
  }
  painter.restore();
}

Sparkline::Sparkline(const Theme& theme, Token line, QWidget* parent) : Painted(theme, parent), line_(line) {}

void Sparkline::setValues(std::vector<std::optional<double>> values, double top) {
  if (values == values_ && top == top_) return;
  values_ = std::move(values);
  top_ = top;
  update();
}

void Sparkline::draw(QPainter& painter) { drawSparkline(painter, rect(), theme(), line_, values_, top_); }

void drawBar(QPainter& painter, const QRectF& box, const Theme& theme, Token fill, double level,
             Qt::LayoutDirection direction) {
  auto whole = snapped(painter, box);
  fillRounded(painter, whole, barCorner, theme.color(Token::sunken));
  auto width = whole.width() * std::clamp(level, 0.0, 1.0);
  if (width <= 0) return;
  width = std::max(width, 2.0); // what is there is seen
  auto left = direction == Qt::RightToLeft ? whole.right() - width : whole.left();
  fillRounded(painter, QRectF(left, whole.top(), width, whole.height()), barCorner, theme.color(fill));
}

Bar::Bar(const Theme& theme, Token fill, QWidget* parent) : Painted(theme, parent), fill_(fill) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  gliding_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&gliding_, &QVariantAnimation::valueChanged, this, [this](const QVariant& level) {
    shown_ = level.toDouble();
    update();
  });
}

void Bar::setLevel(double level) {
  level = std::clamp(level, 0.0, 1.0);
  if (level == level_) return;
  level_ = level;
  gliding_.stop();
  auto duration = isVisible() ? theme().duration(glideMilliseconds) : 0;
  if (duration == 0) {
    shown_ = level;
    update();
    return;
  }
  gliding_.setStartValue(shown_);
  gliding_.setEndValue(level);
  gliding_.setDuration(duration);
  gliding_.start();
}

void Bar::setToken(Token fill) {
  fill_ = fill;
  update();
}

void Bar::setThickness(int thickness) {
  thickness_ = thickness;
  updateGeometry();
}

void Bar::draw(QPainter& painter) {
  QRectF line(0, (height() - thickness_) / 2.0, width(), thickness_);
  drawBar(painter, line, theme(), fill_, shown_, layoutDirection());
}

} // namespace korvell
