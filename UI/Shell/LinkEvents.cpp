#include "UI/Shell/LinkEvents.h"

#include <QCoreApplication>
#include <QFileOpenEvent>
#include <QUrl>

namespace korvell {

LinkEvents::LinkEvents(std::function<void(const std::vector<std::string>&)> opened)
    : opened_(std::move(opened)) {
  QCoreApplication::instance()->installEventFilter(this);
}

bool LinkEvents::eventFilter(QObject* receiver, QEvent* event) {
  if (event->type() != QEvent::FileOpen || receiver != QCoreApplication::instance()) return false;
  opened_({static_cast<QFileOpenEvent*>(event)->url().toEncoded().toStdString()});
  return true;
}

} // namespace korvell
