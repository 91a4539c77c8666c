#include "Widget/WidgetFeed.h"

#include "Base/FileLock.h"
#include "Shared/KeeperFile.h"

namespace korvell {

namespace {

/// How often it is asked whether somebody measures while the document is old.
constexpr Seconds oldInterval{300};
/// While there has never been one: the first comes within a minute of the widget's start.
constexpr Seconds firstInterval{60};

} // namespace

WidgetFeed::WidgetFeed(const UserFolders& folders, const Clock& clock, const TimeZone& zone)
    : folders_(folders), clock_(clock), zone_(zone), path_(WidgetShared::snapshotURL(folders)),
      folder_(path_.substr(0, path_.rfind('/'))) {
  ensurePrivateFolder(folder_);
}

void WidgetFeed::read() {
  if (auto document = WidgetShared::read(path_)) document_ = std::move(document);
}

WidgetPage WidgetFeed::page() const {
  const Date now = clock_.now();
  // A document of now says itself that somebody measures.
  const bool isLate = !document_ || isOld(*document_, now);
  return widgetPage(document_, {now, zone_, !isLate || FileLock::isHeld(keeperLockPath(folders_))});
}

Seconds WidgetFeed::patience() const {
  if (!document_) return firstInterval;
  const auto age = clock_.now() - document_->date;
  return age >= Seconds(0) && age < widgetPatience ? widgetPatience - age : oldInterval;
}

} // namespace korvell
