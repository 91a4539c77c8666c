#include "UI/Kit/Control.h"

#include "UI/Kit/Focus.h"

#include <QKeyEvent>
#include <QMouseEvent>

namespace korvell {

Control::Control(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_Hover);
  setMinimumSize(leastHit, leastHit);
}

Control::~Control() { FocusRing::hide(*this); } // while shape() can still be asked

bool Control::press() {
  if (!isEnabled()) return false;
  pressed();
  return true;
}

bool Control::event(QEvent* event) {
  if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave) {
    hovered_ = event->type() == QEvent::HoverEnter;
    update();
  }
  return Painted::event(event);
}

void Control::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  down_ = true;
  update();
}

void Control::mouseMoveEvent(QMouseEvent* event) {
  if (!event->buttons().testFlag(Qt::LeftButton)) return;
  auto inside = rect().contains(event->position().toPoint());
  if (inside == down_) return;
  down_ = inside;
  update();
}

void Control::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !down_) return event->ignore();
  down_ = false;
  update();
  press();
}

void Control::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
  case Qt::Key_Space:
  case Qt::Key_Select:
  case Qt::Key_Return:
  case Qt::Key_Enter:
    if (event->modifiers() & ~Qt::KeypadModifier) return event->ignore();
    if (!event->isAutoRepeat()) press();
    return;
  default:
    Painted::keyPressEvent(event);
  }
}

void Control::focusInEvent(QFocusEvent* event) {
  if (isKeyboard(event->reason()))
    FocusRing::show(
        *this, [this] { return shape(); }, corner(), theme());
  Painted::focusInEvent(event);
}

void Control::focusOutEvent(QFocusEvent* event) {
  // A menu or another window takes the focus for a while and gives it back: the ring waits.
  if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
    FocusRing::hide(*this);
  Painted::focusOutEvent(event);
}

void Control::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange) {
    down_ = false;
    update();
  }
  Painted::changeEvent(event);
}

} // namespace korvell
