#include "UI/Shell/PanelWindow.h"

#include "Base/Localization.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/ScreenFacts.h"

#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <algorithm>

namespace korvell {

namespace {

constexpr int distance = 6;
constexpr double radius = 12;

} // namespace

QRect panelPlace(const QRect& anchor, const QSize& size, const QRect& available) {
  const bool isBelow = anchor.center().y() < available.center().y();
  const int y = isBelow ? anchor.bottom() + distance : anchor.top() - distance - size.height();
  QRect place(QPoint(anchor.center().x() - size.width() / 2, y), size);
  const auto room = available.adjusted(distance, distance, -distance, -distance);
  place.moveLeft(std::max(room.left(), std::min(place.left(), room.right() + 1 - size.width())));
  place.moveTop(std::max(room.top(), std::min(place.top(), room.bottom() + 1 - size.height())));
  return place;
}

PanelWindow::PanelWindow(const Theme& theme, QWidget& content, std::function<void()> closed)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), theme_(theme),
      content_(content), closed_(std::move(closed)), isRounded_(showsTranslucentWindows()) {
  setWindowTitle(text(localized("Korvell panel")));
  setAttribute(Qt::WA_TranslucentBackground, isRounded_);
  content_.setParent(this);
}

void PanelWindow::openAt(const QRect& anchor) {
  anchor_ = anchor.isEmpty() ? QRect(QCursor::pos(), QSize(1, 1)) : anchor;
  arrange();
  show();
  raise();
  activateWindow();
}

void PanelWindow::arrange() {
  const auto* screen = QGuiApplication::screenAt(anchor_.center());
  if (!screen) screen = QGuiApplication::primaryScreen();
  if (!screen) return; // the last one was unplugged
  const auto available = screen->availableGeometry();
  content_.ensurePolished();
  const int wanted = content_.sizeHint().height();
  const QSize size(width, std::min({wanted, mostHeight, available.height() - screenMargin}));
  setGeometry(panelPlace(anchor_, size, available));
}

bool PanelWindow::event(QEvent* event) {
  // What it shows has grown or shrunk.
  if (event->type() == QEvent::LayoutRequest && isVisible()) arrange();
  if (event->type() == QEvent::WindowDeactivate) close();
  return QWidget::event(event);
}

void PanelWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape)
    close();
  else
    QWidget::keyPressEvent(event);
}

void PanelWindow::resizeEvent(QResizeEvent*) { content_.setGeometry(rect()); }

void PanelWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(QPen(theme_.color(Token::edge), 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
  painter.setBrush(theme_.color(Token::surface));
  painter.setRenderHint(QPainter::Antialiasing);
  const double corner = isRounded_ ? radius : 0;
  painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), corner, corner);
}

void PanelWindow::closeEvent(QCloseEvent* event) {
  QWidget::closeEvent(event);
  closed_();
}

} // namespace korvell
