#include "UI/Window/Page.h"

namespace korvell {

PagePlace Page::place() const {
  const auto* area = scrolled();
  return {.top = area ? area->verticalScrollBar()->value() : 0, .range = 0, .moment = {}};
}

void Page::restore(const PagePlace& place) {
  if (auto* area = scrolled()) area->scrollTo(place.top);
}

} // namespace korvell
