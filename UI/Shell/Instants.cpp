#include "UI/Shell/Instants.h"

#include "Base/Date.h"

#include <QCoreApplication>
#include <QEvent>
#include <QWindow>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>

namespace korvell {

bool Instants::areWanted() {
  const char* wish = std::getenv("KORVELL_TELL_INSTANTS");
  return wish && std::string_view(wish) == "1";
}

void Instants::tell(std::string_view what) {
  if (areWanted())
    fmt::print(stderr, "korvell: instant {:.6f} {}\n", SystemClock().monotonic().count(), what);
}

Instants::Instants() { QCoreApplication::instance()->installEventFilter(this); }

bool Instants::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Expose) {
    // A window paints while it handles this; what is posted comes after it.
    const auto* window = qobject_cast<QWindow*>(watched);
    if (!window) return false;
    const auto what = fmt::format("painted {:#x} {}", window->winId(), window->title().toStdString());
    QMetaObject::invokeMethod(
        this, [what] { tell(what); }, Qt::QueuedConnection);
  }
  return false;
}

} // namespace korvell
