#pragma once
// What scrolls: a page under a quiet scroll bar in our colours.

#include "UI/Kit/Theme.h"

#include <QScrollArea>
#include <QScrollBar>

#include <optional>

namespace korvell {

/// A thumb of 6 without a track in a lane of 12, darker while pointed at; for scroll areas that are not ours
/// too.
void dressScrollBar(QScrollBar& bar, const Theme& theme, Token ground);

/// Scrolls its content up and down; the content is as wide as the area. Follows the keyboard's focus.
class ScrollArea : public QScrollArea {
public:
  ScrollArea(const Theme& theme, Token ground, QWidget* parent);
  /// Takes it over.
  void setContent(QWidget& content);
  /// As soon as the content is high enough, unless somebody scrolls before.
  void scrollTo(int top);

private:
  void dress();
  const Theme& theme_;
  Token ground_;
  std::optional<int> wanted_;
  Subscription themeSubscription_;
};

} // namespace korvell
