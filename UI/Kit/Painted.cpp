#include "UI/Kit/Painted.h"

#include "UI/Kit/Focus.h"
#include "UI/Kit/Text.h"

#include <QFocusEvent>
#include <QPainter>
#include <QTimer>
#include <QToolTip>
#include <utility>

namespace korvell {

Painted::Painted(const Theme& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
  forgetSpoken(*this);
  themeSubscription_ = theme.observe([this] { themeChanged(); });
}

void Painted::setName(std::string_view name) { setAccessibleName(text(name)); }

void Painted::setReason(std::string_view words) {
  reason_ = text(words);
  setToolTip(reason_);
}

void Painted::showTip(std::function<QString()> words, QPoint where) {
  QTimer::singleShot(0, this,
                     [this, words = std::move(words), where] { QToolTip::showText(where, words(), this); });
}

void Painted::focusInEvent(QFocusEvent* event) {
  if (isKeyboard(event->reason()) && !reason_.isEmpty()) {
    constexpr double corner = 4;
    if (!FocusRing::isShown(*this)) FocusRing::show(*this, corner, theme_);
    showTip([this] { return hasFocus() ? reason_ : QString(); }, mapToGlobal(QPoint(0, height())));
  }
  QWidget::focusInEvent(event);
}

void Painted::focusOutEvent(QFocusEvent* event) {
  if (!reason_.isEmpty()) {
    FocusRing::hide(*this);
    QToolTip::hideText();
  }
  QWidget::focusOutEvent(event);
}

void Painted::themeChanged() {
  updateGeometry();
  update();
}

void Painted::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  draw(painter);
}

} // namespace korvell
