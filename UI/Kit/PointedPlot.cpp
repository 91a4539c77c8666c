#include "UI/Kit/PointedPlot.h"

#include "UI/Kit/Focus.h"
#include "UI/Kit/Text.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>

namespace korvell {

PointedPlot::PointedPlot(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
}

void PointedPlot::tellValue() {
  QAccessibleValueChangeEvent event(this, text(spokenValue()));
  QAccessible::updateAccessibility(&event);
}

bool PointedPlot::copies(const QKeyEvent& event) const {
  if (!event.matches(QKeySequence::Copy)) return false;
  if (isPointed()) QGuiApplication::clipboard()->setText(text(spokenValue()));
  return true;
}

void PointedPlot::focusInEvent(QFocusEvent* event) {
  if (isKeyboard(event->reason()))
    FocusRing::show(
        *this, [this] { return plot(); }, 0, theme());
  Painted::focusInEvent(event);
}

void PointedPlot::focusOutEvent(QFocusEvent* event) {
  if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason) {
    FocusRing::hide(*this);
    if (!underMouse()) unpoint();
  }
  Painted::focusOutEvent(event);
}

} // namespace korvell
