#include "UI/Window/Visits.h"

namespace korvell {

void Visits::visit(SidebarItem item) {
  if (!items_.empty()) {
    if (items_[shown_] == item) return;
    items_.resize(shown_ + 1);
  }
  items_.push_back(item);
  if (items_.size() > most) items_.erase(items_.begin());
  shown_ = items_.size() - 1;
}

std::optional<SidebarItem> Visits::back() {
  if (items_.empty() || shown_ == 0) return std::nullopt;
  return items_[--shown_];
}

std::optional<SidebarItem> Visits::forward() {
  if (shown_ + 1 >= items_.size()) return std::nullopt;
  return items_[++shown_];
}

} // namespace korvell
