#include "UI/Pictures/ApplicationPictures.h"

#include "Base/Files.h"
#include "Base/Text.h"
#include "UI/Kit/Text.h"
#include "UI/Pictures/IconTheme.h"

#include <QIcon>
#include <QImageReader>
#include <QPainter>

namespace korvell {

namespace {

constexpr std::size_t largestEntry = 256 * 1024;
constexpr int largestSide = 4096; // of a picture that is worth reading

std::vector<std::string> dataFolders(const UserFolders& folders, const Environment& environment) {
  std::vector<std::string> all = {folders.dataHome, folders.dataHome + "/flatpak/exports/share"};
  const auto system = environment("XDG_DATA_DIRS").value_or("/usr/local/share:/usr/share");
  for (const auto part : split(system, ':'))
    if (part.starts_with('/')) all.emplace_back(part);
  all.insert(all.end(), {"/var/lib/flatpak/exports/share", "/var/lib/snapd/desktop"});
  return all;
}

std::vector<std::string> readable() {
  const auto formats = QImageReader::supportedImageFormats();
  std::vector<std::string> extensions;
  for (const char* format : {"png", "svg", "xpm"})
    if (formats.contains(format)) extensions.emplace_back(format);
  return extensions;
}

QImage read(const std::string& path, int pixels) {
  QImageReader reader(text(path));
  const auto natural = reader.size();
  if (natural.width() > largestSide || natural.height() > largestSide) return {};
  if (natural.isValid()) reader.setScaledSize(natural.scaled(pixels, pixels, Qt::KeepAspectRatio));
  const auto picture = reader.read();
  if (picture.isNull() || picture.width() == picture.height()) return picture;
  // Not square: in the middle of one that is.
  QImage square(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  square.fill(Qt::transparent);
  QPainter(&square).drawImage((pixels - picture.width()) / 2, (pixels - picture.height()) / 2, picture);
  return square;
}

} // namespace

Pictures::MakeLoad applicationPictures(const UserFolders& folders, const Environment& environment) {
  return [data = dataFolders(folders, environment)]() -> Pictures::Load {
    // The toolkit knows the desktop's choice, on the main thread. What it can read it finds out by loading
    // its plugins, which the main thread does not wait for.
    return [data, name = utf8(QIcon::themeName()),
            theme = std::shared_ptr<IconTheme>()](const std::string& entry, int pixels) mutable -> QImage {
      if (!theme)
        theme = std::make_shared<IconTheme>(
            IconTheme::Options{.dataFolders = data, .theme = name, .extensions = readable()});
      const auto text = readFile(entry, largestEntry);
      const auto icon = text ? entryIcon(*text) : std::nullopt;
      const auto path = icon ? theme->find(*icon, pixels) : std::nullopt;
      return path ? read(*path, pixels) : QImage();
    };
  };
}

} // namespace korvell
