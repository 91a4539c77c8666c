#include "UI/Kit/Switches.h"

#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QStyle>

namespace korvell {

namespace {

constexpr double boxSize = 16;
constexpr double boxGap = 8;
constexpr double fieldLine = 1.25; // outlines of what can be filled in

void tellChecked(QWidget& widget) {
  QAccessible::State changed;
  changed.checked = true;
  tellStateChanged(widget, changed);
}

void drawTick(QPainter& painter, const QRectF& box, const QColor& ink, CheckBox::State state) {
  painter.save();
  painter.setPen(QPen(ink, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  auto at = [&](double x, double y) {
    return QPointF(box.left() + x * box.width() / boxSize, box.top() + y * box.height() / boxSize);
  };
  if (state == CheckBox::State::on)
    painter.drawPolyline(QPolygonF{at(4, 8.3), at(6.8, 11), at(12, 5.2)});
  else
    painter.drawLine(at(4.5, 8), at(11.5, 8));
  painter.restore();
}

} // namespace

Toggle::Toggle(const Theme& theme, std::string_view name, QWidget* parent) : Control(theme, parent) {
  setName(name);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void Toggle::setOn(bool on) {
  if (on == on_) return;
  on_ = on;
  update();
  tellChecked(*this);
}

void Toggle::pressed() {
  setOn(!on_);
  if (auto handler = handler_) handler(on_);
}

void Toggle::addStates(QAccessible::State& state) const {
  state.checkable = true;
  state.checked = on_;
}

QRectF Toggle::shape() const { return {(width() - 32) / 2.0, (height() - 18) / 2.0, 32, 18}; }

void Toggle::draw(QPainter& painter) {
  auto box = shape();
  auto isAtRight = on_ != isRightToLeft();
  QPointF knob(isAtRight ? box.right() - 9 : box.left() + 9, box.center().y());
  auto color = [&](Token token) { return theme().color(token); };
  if (on_) {
    auto ground = isEnabled() ? theme().mixed(Token::accent,
                                              isDown()      ? 0.8
                                              : isHovered() ? 0.9
                                                            : 1,
                                              Token::text1)
                              : color(Token::border);
    fillRounded(painter, box, corner(), ground);
  } else {
    auto line = isEnabled() && isHovered() ? Token::text3 : Token::border;
    drawRounded(painter, box, corner(), color(isEnabled() ? Token::raised : Token::surface), color(line),
                fieldLine);
  }
  painter.setPen(Qt::NoPen);
  painter.setBrush(on_ ? color(isEnabled() ? Token::accentInk : Token::surface) : color(Token::border));
  auto radius = on_ ? 6.5 : 5.5;
  painter.drawEllipse(knob, radius, radius);
}

CheckBox::CheckBox(const Theme& theme, std::string_view name, std::string_view words, QWidget* parent)
    : Control(theme, parent), words_(text(words)) {
  setName(name.empty() ? words : name);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void CheckBox::setState(State state) {
  if (state == state_) return;
  state_ = state;
  update();
  tellChecked(*this);
}

void CheckBox::pressed() {
  setState(state_ == State::on ? State::off : State::on);
  if (auto handler = handler_) handler(state_ == State::on);
}

QSize CheckBox::sizeHint() const {
  if (words_.isEmpty()) return {leastHit, leastHit};
  auto width = 4 + boxSize + boxGap + textWidth(theme(), TextStyle::body, words_);
  return {qCeil(width), std::max<int>(leastHit, lineHeight(theme(), TextStyle::body))};
}

void CheckBox::addStates(QAccessible::State& state) const {
  state.checkable = true;
  state.checked = state_ == State::on;
  state.checkStateMixed = state_ == State::some;
}

QRectF CheckBox::shape() const {
  QRect place(4, (height() - int(boxSize)) / 2, int(boxSize), int(boxSize));
  return QStyle::visualRect(layoutDirection(), rect(), place);
}

void CheckBox::draw(QPainter& painter) {
  drawCheckBox(painter, shape(), theme(), state_, isEnabled());
  if (isEnabled() && isHovered() && state_ == State::off)
    drawOutline(painter, shape(), corner(), theme().color(Token::text2), fieldLine);
  if (words_.isEmpty()) return;
  auto behind = QRectF(rect()).adjusted(4 + boxSize + boxGap, 0, 0, 0);
  if (isRightToLeft()) behind = QRectF(0, 0, shape().left() - boxGap, height());
  drawText(painter, behind, theme(), TextStyle::body, isEnabled() ? Token::text1 : Token::text3, words_);
}

void drawCheckBox(QPainter& painter, const QRectF& box, const Theme& theme, CheckBox::State state,
                  bool enabled) {
  auto color = [&](Token token) { return theme.color(token); };
  if (state == CheckBox::State::off) {
    drawRounded(painter, box, 4, color(enabled ? Token::raised : Token::surface), color(Token::border),
                fieldLine);
    return;
  }
  fillRounded(painter, box, 4, color(enabled ? Token::accent : Token::border));
  drawTick(painter, box, color(enabled ? Token::accentInk : Token::surface), state);
}

} // namespace korvell
