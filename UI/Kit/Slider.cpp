#include "UI/Kit/Slider.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Paint.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double trackHeight = 4, trackAbove = 1.5; ///< the bar below moves it up
constexpr double levelHeight = 2, levelBelow = 9;
constexpr double notchHeight = 10, notchWidth = 1.5;
constexpr double knobLine = 1.5;
constexpr double stopAtNotch = 4; // pixels on both sides
constexpr int keyStep = 1, pageStep = 10;

} // namespace

Slider::Slider(const Theme& theme, std::string_view name, int most, std::optional<int> notch, QWidget* parent)
    : Control(theme, parent), most_(most), notch_(notch) {
  setName(name);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Slider::setValue(int value) {
  value = std::clamp(value, 0, most_);
  if (isDragged_ && !isEnabled()) isDragged_ = false; // no release comes any more
  if (!isDragged_ && value != value_) place(value);
}

/// The ring goes with the knob.
void Slider::place(int value) {
  value_ = value;
  update();
  if (FocusRing::isShown(*this))
    FocusRing::show(
        *this, [this] { return shape(); }, corner(), theme());
}

void Slider::setSilent(bool isSilent) {
  if (std::exchange(isSilent_, isSilent) != isSilent) update();
}

void Slider::setLevel(std::optional<double> level) {
  if (level_ == level) return;
  level_ = level;
  const auto line = track();
  update(QRectF(line.left(), line.center().y() + levelBelow - levelHeight, line.width(), 2 * levelHeight)
             .toAlignedRect());
}

std::string Slider::spokenValue() const { return localized("{n} percent", {{"n", std::to_string(value_)}}); }

void Slider::moveMeter(double value) {
  if (isEnabled()) move(int(std::lround(value)));
}

void Slider::move(int value) {
  value = std::clamp(value, 0, most_);
  if (value == value_) return;
  place(value);
  tellMeterMoved(*this, value_);
  if (auto handler = handler_) handler(value_);
}

// Geometry

QRectF Slider::track() const {
  const double middle = height() / 2.0 - trackAbove;
  return {radius, middle - trackHeight / 2, width() - 2 * radius, trackHeight};
}

double Slider::placeOf(double percent) const {
  const auto line = track();
  const double length = line.width() * percent / most_;
  return isRightToLeft() ? line.right() - length : line.left() + length;
}

int Slider::valueAt(double x) const {
  const auto line = track();
  const double length = isRightToLeft() ? line.right() - x : x - line.left();
  if (notch_ && std::abs(x - placeOf(*notch_)) <= stopAtNotch) return *notch_;
  return std::clamp(int(std::lround(length / line.width() * most_)), 0, most_);
}

/// From the start of the track to that percentage.
QRectF Slider::span(double percent, double top, double height) const {
  const auto line = track();
  const double end = placeOf(percent);
  return isRightToLeft() ? QRectF(end, top, line.right() - end, height)
                         : QRectF(line.left(), top, end - line.left(), height);
}

QRectF Slider::shape() const {
  const QPointF knob(placeOf(value_), track().center().y());
  return {knob.x() - radius, knob.y() - radius, 2 * radius, 2 * radius};
}

void Slider::draw(QPainter& painter) {
  const auto color = [&](Token token) { return theme().color(token); };
  const auto line = track();
  const double middle = line.center().y();
  if (notch_) {
    const QRectF notch(placeOf(*notch_) - notchWidth / 2, middle - notchHeight / 2, notchWidth, notchHeight);
    fillBox(painter, snapped(painter, notch), color(Token::border));
  }
  fillRounded(painter, snapped(painter, line), 2, color(Token::sunken));
  const bool isColored = isEnabled() && !isSilent_;
  const auto filled = snapped(painter, span(value_, line.top(), line.height()));
  if (filled.width() > 0) fillRounded(painter, filled, 2, color(isColored ? Token::accent : Token::border));
  if (level_) {
    const double reached = std::clamp(*level_, 0.0, 1.0) * std::min(100, most_);
    const auto bar = snapped(painter, span(reached, middle + levelBelow - levelHeight / 2, levelHeight));
    if (bar.width() > 0) fillBox(painter, bar, color(Token::network));
  }
  const auto outline = !isEnabled()                ? Token::edge
                       : isDragged_ || isHovered() ? Token::text1
                       : isSilent_                 ? Token::border
                                                   : Token::accent;
  drawRounded(painter, shape(), radius, color(isEnabled() ? Token::raised : Token::surface), color(outline),
              knobLine);
}

// Mouse and keys

void Slider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !isEnabled()) return event->ignore();
  isDragged_ = true;
  // On the knob it stays where it is until it is dragged.
  if (!shape().contains(event->position())) move(valueAt(event->position().x()));
  update();
}

void Slider::mouseMoveEvent(QMouseEvent* event) {
  if (isDragged_) move(valueAt(event->position().x()));
}

void Slider::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !isDragged_) return event->ignore();
  isDragged_ = false;
  update();
}

void Slider::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !isEnabled()) return event->ignore();
  if (notch_) move(*notch_);
}

void Slider::keyPressEvent(QKeyEvent* event) {
  if (event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) return event->ignore();
  const int step = event->modifiers().testFlag(Qt::ShiftModifier) ? pageStep : keyStep;
  const int forward = isRightToLeft() ? -1 : 1;
  switch (event->key()) {
  case Qt::Key_Right:
    return move(value_ + forward * step);
  case Qt::Key_Left:
    return move(value_ - forward * step);
  case Qt::Key_PageUp:
    return move(value_ + pageStep);
  case Qt::Key_PageDown:
    return move(value_ - pageStep);
  case Qt::Key_Home:
    return move(0);
  case Qt::Key_End:
    return move(most_);
  default:
    event->ignore();
  }
}

} // namespace korvell
