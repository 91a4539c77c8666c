#include "UI/Shell/FileManager.h"

#include "UI/Kit/Text.h"

#include <QDesktopServices>
#include <QUrl>

namespace korvell {

void openPath(const std::string& path) { QDesktopServices::openUrl(QUrl::fromLocalFile(text(path))); }

void openAddress(const std::string& address) { QDesktopServices::openUrl(QUrl(text(address))); }

} // namespace korvell
