#include "UI/Window/Visits.h"

namespace korvell {

void Visits::visit(SidebarItem item) {
  if (!visits_.empty()) {
    if (visits_[shown_].section == item) return;
    visits_.resize(shown_ + 1);
  }
  visits_.push_back({item});
  if (visits_.size() > most) visits_.erase(visits_.begin());
  shown_ = visits_.size() - 1;
}

std::optional<SidebarItem> Visits::back() {
  if (visits_.empty() || shown_ == 0) return std::nullopt;
  return visits_[--shown_].section;
}

std::optional<SidebarItem> Visits::forward() {
  if (shown_ + 1 >= visits_.size()) return std::nullopt;
  return visits_[++shown_].section;
}

void Visits::keep(const PagePlace& place) {
  if (!visits_.empty()) visits_[shown_].place = place;
}

} // namespace korvell
