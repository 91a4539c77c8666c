#include "Widget/WidgetPlace.h"

#include "Base/Files.h"

namespace korvell {

namespace {

constexpr std::size_t mostBytes = 64 << 10;

std::string pathOf(const UserFolders& folders) { return folders.config + "/widget.json"; }

} // namespace

WidgetPlace WidgetPlace::load(const UserFolders& folders) {
  const auto text = readFile(pathOf(folders), mostBytes);
  const auto document = text ? parseJSON(*text) : std::nullopt;
  WidgetPlace place;
  return document && fromValue(*document, place) ? place : WidgetPlace();
}

bool WidgetPlace::save(const UserFolders& folders) const {
  return ensurePrivateFolder(folders.config) &&
         replaceFile(pathOf(folders), dumpJSON(toValue(*this), JSONStyle::indented) + "\n");
}

} // namespace korvell
