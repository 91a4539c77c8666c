#pragma once
// What the widget reads: the document, and whether somebody measures. Asks the disk; main thread of a
// process that has nothing else to do.

#include "Base/UserFolders.h"
#include "Widget/WidgetPage.h"

namespace korvell {

class WidgetFeed {
public:
  /// All of them outlive the feed.
  WidgetFeed(const UserFolders& folders, const Clock& clock, const TimeZone& zone);

  /// The folder to watch for a new document; made when it is not there.
  const std::string& folder() const { return folder_; }
  /// Reads the document anew. One that can't be read leaves the last that could.
  void read();
  WidgetPage page() const;
  /// After how long the page may change without a new document.
  Seconds patience() const;

private:
  const UserFolders& folders_;
  const Clock& clock_;
  const TimeZone& zone_;
  const std::string path_, folder_;
  std::optional<WidgetSnapshot> document_;
};

} // namespace korvell
