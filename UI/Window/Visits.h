#pragma once
// The sections that were looked at, for going back and forward as in a browser.

#include "Core/Machine/Models.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace korvell {

/// Where on its page somebody was.
struct PagePlace {
  int top = 0;                ///< how far it was scrolled, in logical pixels
  std::size_t range = 0;      ///< of a chart, counted from the shortest
  std::optional<Date> moment; ///< that was pinned

  bool operator==(const PagePlace&) const = default;
};

class Visits {
public:
  static constexpr std::size_t most = 100;

  /// What lay ahead is forgotten; the section that is shown already is no new visit.
  void visit(SidebarItem item);
  /// The section to show now; nothing at the end.
  std::optional<SidebarItem> back();
  std::optional<SidebarItem> forward();

  /// What the page that is shown is found at when somebody comes back to it; at its beginning until then.
  void keep(const PagePlace& place);
  PagePlace place() const { return visits_.empty() ? PagePlace() : visits_[shown_].place; }

private:
  struct Visit {
    SidebarItem section;
    PagePlace place{};
  };
  std::vector<Visit> visits_; ///< oldest first
  std::size_t shown_ = 0;
};

} // namespace korvell
