#pragma once
// The sections that were looked at, for going back and forward as in a browser.

#include "Core/Machine/Models.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace korvell {

class Visits {
public:
  static constexpr std::size_t most = 100;

  /// What lay ahead is forgotten; the section that is shown already is no new visit.
  void visit(SidebarItem item);
  /// The section to show now; nothing at the end.
  std::optional<SidebarItem> back();
  std::optional<SidebarItem> forward();

private:
  std::vector<SidebarItem> items_; ///< oldest first
  std::size_t shown_ = 0;
};

} // namespace korvell
