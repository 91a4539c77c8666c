#pragma once
// An application without a display, and hands for it.

#include "UI/Kit/Spoken.h"
#include "UI/Kit/Theme.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <functional>

namespace korvell {

inline void keepApplication() {
  static int argc = 1;
  static char name[] = "tests";
  static char* argv[] = {name, nullptr};
  static QApplication* application = [] {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    auto* made = new QApplication(argc, argv); // lives as long as the process
    QApplication::setStyle("Fusion");
    installSpoken();
    return made;
  }();
  static_cast<void>(application);
}

struct KitTests : testing::Test {
  KitTests() { QApplication::setLayoutDirection(Qt::LeftToRight); }

  /// The toolkit's own search knows only classes that it generated code for.
  template <class W>
  static std::vector<W*> all(const QWidget& window) {
    std::vector<W*> found;
    for (auto* widget : window.findChildren<QWidget*>())
      if (auto* each = dynamic_cast<W*>(widget)) found.push_back(each);
    return found;
  }

  static void show(QWidget& window) {
    window.show();
    window.activateWindow();
    QApplication::processEvents();
  }
  /// To whom has the focus in the window, as the toolkit would.
  static void key(QWidget& window, int key, Qt::KeyboardModifiers modifiers = {}, bool isRepeat = false) {
    for (auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
      auto* focused = window.focusWidget() ? window.focusWidget() : &window;
      QKeyEvent event(type, key, modifiers, {}, isRepeat);
      QApplication::sendEvent(focused, &event);
    }
  }
  static void mouse(QWidget& widget, QEvent::Type type, QPointF at, Qt::MouseButton button = Qt::LeftButton) {
    auto held = type == QEvent::MouseButtonRelease ? Qt::MouseButtons() : Qt::MouseButtons(button);
    QMouseEvent event(type, at, widget.mapToGlobal(at), type == QEvent::MouseMove ? Qt::NoButton : button,
                      held, {});
    QApplication::sendEvent(&widget, &event);
  }
  static void click(QWidget& widget, Qt::MouseButton button = Qt::LeftButton) {
    mouse(widget, QEvent::MouseButtonPress, {5, 5}, button);
    mouse(widget, QEvent::MouseButtonRelease, {5, 5}, button);
  }
  /// What painting leaves on white.
  static QImage painted(int width, int height, const std::function<void(QPainter&)>& paint) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    paint(painter);
    return image;
  }

  Theme theme{(keepApplication(), Look{.reducedMotion = true})};
};

} // namespace korvell
