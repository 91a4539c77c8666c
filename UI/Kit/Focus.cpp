#include "UI/Kit/Focus.h"

#include "UI/Kit/Paint.h"

#include <QAbstractScrollArea>
#include <QEvent>

#include <utility>

namespace korvell {

namespace {

constexpr int reach = 4; // 2 px outside, 2 px wide

/// The ring's place over something above the widget.
QRect placeOver(const QWidget& over, const QWidget& around, const QRectF& shape) {
  auto whole = shape.translated(around.mapTo(&over, QPoint()));
  return whole.adjusted(-reach, -reach, reach, reach).toAlignedRect();
}

bool scrolls(const QWidget& widget) {
  auto* above = widget.parentWidget() ? widget.parentWidget()->parentWidget() : nullptr;
  return dynamic_cast<QAbstractScrollArea*>(above) != nullptr;
}

QWidget& withRoom(QWidget& around, const QRectF& shape) {
  auto* over = around.parentWidget();
  while (!over->isWindow() && over->parentWidget() && !scrolls(*over) &&
         !over->rect().contains(placeOver(*over, around, shape)))
    over = over->parentWidget();
  return *over;
}

} // namespace

bool isKeyboard(Qt::FocusReason reason) {
  return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::ShortcutFocusReason;
}

void orderTabs(const std::vector<QWidget*>& parts) {
  QWidget* last = nullptr;
  const auto add = [&](QWidget* stop) {
    if (stop->focusPolicy() == Qt::NoFocus) return;
    if (last && last->nextInFocusChain() != stop) QWidget::setTabOrder(last, stop);
    last = stop;
  };
  for (auto* part : parts) {
    if (!part) continue;
    add(part);
    for (auto* stop : part->findChildren<QWidget*>()) add(stop);
  }
}

FocusRing* FocusRing::of(const QWidget& around) {
  for (auto* over = around.parentWidget(); over; over = over->isWindow() ? nullptr : over->parentWidget())
    for (auto* child : over->children())
      if (auto* ring = dynamic_cast<FocusRing*>(child); ring && ring->around_ == &around) return ring;
  return nullptr;
}

FocusRing::FocusRing(QWidget& around, Shape shape, double corner, const Theme& theme, QWidget& over)
    : QWidget(&over), around_(&around), shape_(std::move(shape)), corner_(corner), theme_(theme) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  for (auto* moving = &around; moving != &over; moving = moving->parentWidget())
    moving->installEventFilter(this);
  // Being destroyed, a control no longer hears that it loses the focus.
  connect(&around, &QObject::destroyed, this, [this] { delete this; });
  follow();
}

void FocusRing::show(QWidget& around, Shape shape, double corner, const Theme& theme) {
  hide(around);
  if (!around.parentWidget() || around.isWindow()) return;
  auto& over = withRoom(around, shape());
  new FocusRing(around, std::move(shape), corner, theme, over);
}

void FocusRing::show(QWidget& around, double corner, const Theme& theme) {
  Shape whole = [&around] { return QRectF(around.rect()); };
  show(around, std::move(whole), corner, theme);
}

void FocusRing::hide(QWidget& around) { delete of(around); }

bool FocusRing::isShown(const QWidget& around) { return of(around) != nullptr; }

void FocusRing::follow() {
  setGeometry(placeOver(*parentWidget(), *around_, shape_()));
  setVisible(around_->isVisibleTo(parentWidget()));
  raise();
}

bool FocusRing::eventFilter(QObject*, QEvent* event) {
  switch (event->type()) {
  case QEvent::Move:
  case QEvent::Resize:
  case QEvent::Show:
  case QEvent::Hide:
  case QEvent::ZOrderChange:
    follow();
    break;
  case QEvent::ParentChange:
    deleteLater();
    break;
  default:
    break;
  }
  return false;
}

void FocusRing::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  drawOutline(painter, rect(), corner_ + reach, theme_.color(Token::accent), 2);
}

} // namespace korvell
