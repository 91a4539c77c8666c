#include "UI/Kit/Focus.h"

#include "UI/Kit/Paint.h"

#include <QEvent>

namespace korvell {

namespace {

constexpr int reach = 4; // 2 px outside, 2 px wide

} // namespace

bool isKeyboard(Qt::FocusReason reason) {
  return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
         reason == Qt::ShortcutFocusReason;
}

FocusRing* FocusRing::of(const QWidget& around) {
  if (!around.parentWidget()) return nullptr;
  for (auto* child : around.parentWidget()->children())
    if (auto* ring = dynamic_cast<FocusRing*>(child); ring && ring->around_ == &around) return ring;
  return nullptr;
}

FocusRing::FocusRing(QWidget& around, const QRectF& shape, double corner, const Theme& theme)
    : QWidget(around.parentWidget()), around_(&around),
      inset_(shape.left(), shape.top(), around.width() - shape.right(), around.height() - shape.bottom()),
      corner_(corner), theme_(theme) {
  setAttribute(Qt::WA_TransparentForMouseEvents);
  around.installEventFilter(this);
  follow();
  QWidget::show();
}

void FocusRing::show(QWidget& around, const QRectF& shape, double corner, const Theme& theme) {
  hide(around);
  if (around.parentWidget()) new FocusRing(around, shape, corner, theme);
}

void FocusRing::hide(QWidget& around) { delete of(around); }

bool FocusRing::isShown(const QWidget& around) { return of(around) != nullptr; }

void FocusRing::follow() {
  auto shape = QRectF(around_->geometry()).marginsRemoved(inset_);
  setGeometry(shape.adjusted(-reach, -reach, reach, reach).toAlignedRect());
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
  case QEvent::Destroy:
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
