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
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

namespace korvell {

/// Made when the first test begins and ended after the last one; not while tests are only listed.
class KitApplication final : public testing::Environment {
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    application_ = std::make_unique<QApplication>(argc_, argv_);
    QApplication::setStyle("Fusion");
    installSpoken();
  }
  void TearDown() override { application_.reset(); }

  int argc_ = 1;
  char name_[6] = "tests";
  char* argv_[2] = {name_, nullptr};
  std::unique_ptr<QApplication> application_;
};
inline testing::Environment* const kitApplication = testing::AddGlobalTestEnvironment(new KitApplication);

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

  Theme theme{{.reducedMotion = true}};
};

} // namespace korvell
