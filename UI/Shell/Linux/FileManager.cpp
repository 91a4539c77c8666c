#include "UI/Shell/FileManager.h"

#include "UI/Kit/Text.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QUrl>
#include <filesystem>

namespace korvell {

void showInFileManager(const std::string& path) {
  auto ask = QDBusMessage::createMethodCall("org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                                            "org.freedesktop.FileManager1", "ShowItems");
  ask.setArguments({QStringList{QUrl::fromLocalFile(text(path)).toString(QUrl::FullyEncoded)}, QString()});
  auto* call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(ask), qApp);
  QObject::connect(call, &QDBusPendingCallWatcher::finished, call, [call, path] {
    call->deleteLater();
    if (call->isError()) openPath(std::filesystem::path(path).parent_path().string());
  });
}

} // namespace korvell
