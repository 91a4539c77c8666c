#include "UI/Share/CardFile.h"

#include "Base/Localization.h"
#include "UI/Kit/Text.h"

#include <QDir>
#include <QFile>

namespace korvell {

Result<std::string> saveNewPicture(const QImage& picture, const std::string& folder,
                                   const std::string& name) {
  constexpr int most = 1000;
  QDir().mkpath(text(folder));
  QFile file;
  for (int i = 1; i <= most; ++i) {
    const auto number = i > 1 ? " " + std::to_string(i) : std::string();
    file.setFileName(text(folder + "/" + name + number + ".png"));
    if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) break;
    if (!file.exists()) return Failure{utf8(file.errorString())};
  }
  if (!file.isOpen()) return Failure{localized("there are too many of that name")};
  if (picture.save(&file, "PNG") && file.flush() && file.error() == QFileDevice::NoError)
    return utf8(file.fileName());
  const auto reason = utf8(file.errorString());
  file.remove(); // what was begun a moment ago
  return Failure{reason};
}

} // namespace korvell
