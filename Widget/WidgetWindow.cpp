#include "Widget/WidgetWindow.h"

#include "Base/Localization.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Text.h"
#include "Widget/DesktopWindow.h"

#include <QActionGroup>
#include <QApplication>
#include <QContextMenuEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QToolTip>
#include <QWindow>

#include <algorithm>

namespace korvell {

namespace {

constexpr int settlingMilliseconds = 100, rememberingMilliseconds = 1000;
constexpr int cornerDistance = 24;
constexpr double menuRadius = 8;

/// Where nothing composes windows.
void cutCorners(QWidget& window, double radius) {
  QPainterPath shape;
  shape.addRoundedRect(window.rect(), radius, radius);
  window.setMask(shape.toFillPolygon().toPolygon());
}

/// As near to the point as the room allows.
QPoint within(const QRect& room, const QSize& size, QPoint point) {
  const auto fit = [](int at, int first, int last) { return std::max(first, std::min(at, last)); };
  return {fit(point.x(), room.left(), room.right() + 1 - size.width()),
          fit(point.y(), room.top(), room.bottom() + 1 - size.height())};
}

int milliseconds(Seconds span) { return int(span.count() * 1000) + 1; }

} // namespace

WidgetWindow::WidgetWindow(Parts parts, WidgetPart::Open open)
    : parts_(parts), place_(WidgetPlace::load(parts.folders)), face_(parts.theme, std::move(open), this) {
  setWindowTitle(text("Korvell"));
  setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
  setAttribute(Qt::WA_ShowWithoutActivating);
  if (showsThrough()) setAttribute(Qt::WA_TranslucentBackground);
  for (auto* timer : {&settling_, &ageing_, &remembering_}) timer->setSingleShot(true);
  ageing_.setTimerType(Qt::VeryCoarseTimer);
  connect(&settling_, &QTimer::timeout, this, [this] { readDocument(); });
  connect(&ageing_, &QTimer::timeout, this, [this] { showPage(); });
  connect(&remembering_, &QTimer::timeout, this, [this] {
    const auto before = place_;
    notePlace();
    if (place_ != before) store();
  });
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this,
          [this] { settling_.start(settlingMilliseconds); });
  face_.setSize(place_.size);
  setFixedSize(face_.sizeHint());
  readDocument();
  putInPlace();
  // At login a panel may come up later.
  connect(QGuiApplication::primaryScreen(), &QScreen::availableGeometryChanged, this,
          [this] { putInPlace(); });
  keepOnDesktop(*this);
}

void WidgetWindow::readDocument() {
  const auto folder = text(parts_.feed.folder());
  if (!watcher_.directories().contains(folder) && ensurePrivateFolder(parts_.feed.folder()))
    watcher_.addPath(folder); // it was taken away and is there again
  parts_.feed.read();
  showPage();
}

void WidgetWindow::showPage() {
  face_.show(parts_.feed.page());
  ageing_.start(milliseconds(parts_.feed.patience()));
}

void WidgetWindow::setSize(WidgetSize size) {
  place_.size = size;
  face_.setSize(size);
  setFixedSize(face_.sizeHint());
  putInPlace();
  store();
}

void WidgetWindow::putInPlace() {
  if (!canPlaceWindows()) return;
  notePlace();
  constexpr int farthest = 1 << 20; // beyond every desktop, and far from an overflow
  const QPoint remembered(std::clamp(place_.x.value_or(0), -farthest, farthest),
                          std::clamp(place_.y.value_or(0), -farthest, farthest));
  const auto* screen =
      place_.x && place_.y ? QGuiApplication::screenAt(remembered + rect().center()) : nullptr;
  const auto room = (screen ? screen : QGuiApplication::primaryScreen())->availableGeometry();
  const QPoint corner(room.right() - width() - cornerDistance, room.top() + cornerDistance);
  put_ = within(room, size(), screen ? remembered : corner);
  move(*put_);
}

void WidgetWindow::notePlace() {
  if (!put_ || pos() == *put_) return;
  place_.x = x();
  place_.y = y();
  put_ = pos();
}

void WidgetWindow::store() {
  if (!place_.save(parts_.folders)) tell(localized("The widget's place can't be stored."));
}

void WidgetWindow::switchLogin(bool enabled) {
  if (const auto outcome = parts_.loginItem.setEnabled(enabled); !outcome) tell(outcome.reason());
}

void WidgetWindow::tell(const std::string& sentence) {
  QToolTip::showText(mapToGlobal(rect().center()), text(sentence), this);
}

void WidgetWindow::contextMenuEvent(QContextMenuEvent* event) {
  auto* menu = new Menu(parts_.theme, this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  auto* sizes = new QActionGroup(menu);
  for (const auto& each : allCases<WidgetSize>()) {
    auto& action = menu->add(localized(each.title), [this, size = each.value] { setSize(size); });
    action.setCheckable(true);
    action.setChecked(each.value == place_.size);
    sizes->addAction(&action);
  }
  menu->addRule();
  const bool isEnabled = parts_.loginItem.isEnabled();
  auto& login = menu->add(localized("Start at login"), [this, isEnabled] { switchLogin(!isEnabled); });
  login.setCheckable(true);
  login.setChecked(isEnabled);
  menu->addRule();
  if (parts_.openHelp) menu->add(localized("Help"), parts_.openHelp);
  menu->add(localized("Close"), [] { QApplication::quit(); });
  menu->popup(event->globalPos());
  if (!testAttribute(Qt::WA_TranslucentBackground)) cutCorners(*menu, menuRadius);
}

void WidgetWindow::mousePressEvent(QMouseEvent* event) { pressedAt_ = event->position().toPoint(); }

void WidgetWindow::mouseMoveEvent(QMouseEvent* event) {
  if (!isDrag(*event, pressedAt_) || !windowHandle()) return;
  pressedAt_.reset();
  windowHandle()->startSystemMove();
}

void WidgetWindow::moveEvent(QMoveEvent*) {
  if (isVisible() && canPlaceWindows()) remembering_.start(rememberingMilliseconds);
}

void WidgetWindow::paintEvent(QPaintEvent*) {
  // The mask's corners have no half pixels: what it leaves of them is the widget's own ground.
  if (!testAttribute(Qt::WA_TranslucentBackground))
    QPainter(this).fillRect(rect(), parts_.theme.color(Token::surface));
}

void WidgetWindow::resizeEvent(QResizeEvent*) {
  face_.setGeometry(rect());
  if (!testAttribute(Qt::WA_TranslucentBackground)) cutCorners(*this, WidgetFace::cornerRadius);
}

} // namespace korvell
