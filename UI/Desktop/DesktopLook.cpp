#include "UI/Desktop/DesktopLook.h"

#include <QGuiApplication>
#include <QPalette>

namespace korvell {

DesktopWishes DesktopLook::fromPalette() {
  // The first one that there is: a program may set one of its own later.
  static const auto window = QGuiApplication::palette().color(QPalette::Window);
  return {.appearance = window.lightnessF() < 0.5F ? Appearance::dark : Appearance::light};
}

} // namespace korvell
