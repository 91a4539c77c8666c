#include "UI/Startup/StartupPage.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Core/Startup/StartupScanner.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/Filter.h"

#include <algorithm>

namespace korvell {

namespace {

std::string headingOf(LaunchScope scope) {
  switch (scope) {
  case LaunchScope::user:
    return localized("Your launch agents");
  case LaunchScope::allUsers:
    return localized("Launch agents for all users");
  case LaunchScope::system:
    break;
  }
  return localized("System daemons");
}

std::string stateOf(const StartupItem& item) {
  if (item.isLeftover) return localized("leftover");
  return item.isLoaded ? localized("loaded") : std::string();
}

StartupPage::Item rowOf(const StartupItem& item) {
  StartupPage::Item row{.key = item.plistPath + '\n' + item.label,
                        .label = item.label,
                        .program = item.program.value_or(noFigure),
                        .isPath = item.program.has_value(),
                        .file = item.plistPath,
                        .starts = {},
                        .state = stateOf(item),
                        .remove = {},
                        .spoken = {}};
  // Of a leftover the path matters: it says which application is gone.
  if (runsInsideApplication(item) && !item.isLeftover) {
    row.program = localized("Runs from inside its app");
    row.isPath = false;
  }
  if ((item.runsAtLoad || item.keepAlive) && !item.isLeftover) row.starts = localized("starts by itself");
  if (item.isLeftover)
    row.remove =
        RemoveStartupItemRequest{.plistPath = item.plistPath, .label = item.label, .program = item.program};
  row.spoken = row.label;
  for (const auto& words : {row.program, row.starts, row.state})
    if (!words.empty() && words != noFigure) row.spoken += ", " + words;
  return row;
}

bool isMatch(const StartupItem& item, const std::string& filter) {
  return matches(item.label, filter) || matches(item.plistPath, filter) ||
         (item.program && matches(*item.program, filter));
}

} // namespace

StartupPage startupPage(const Model& model, const std::string& filter) {
  const auto& items = *model.startupItems;
  StartupPage page{
      .isMeasured = model.startupItems.version() > 0 || !items.empty(),
      .lead = localized("Background programs that launch with your Mac. Leftovers point to programs that no "
                        "longer exist, usually from apps you already deleted."),
      .summary = {},
      .hasItems = !items.empty(),
      .hasLeftovers = false,
      .groups = {},
      .noMatch = {}};
  const auto add = [&](const std::string& title, const auto& belongs) {
    StartupPage::Group group{title, {}};
    for (const auto& item : items)
      if (belongs(item) && isMatch(item, filter)) group.items.push_back(rowOf(item));
    if (!group.items.empty()) page.groups.push_back(std::move(group));
  };
  add(localized("Leftovers"), [](const StartupItem& item) { return item.isLeftover; });
  for (const auto& scope : allCases<LaunchScope>())
    add(headingOf(scope.value),
        [&](const StartupItem& item) { return !item.isLeftover && item.scope == scope.value; });
  if (items.empty()) return page;
  page.summary = counted(std::int64_t(items.size()), "1 item", "{n} items");
  if (const auto gone = std::ranges::count_if(items, &StartupItem::isLeftover); gone > 0) {
    page.summary += ", " + counted(gone, "1 leftover", "{n} leftovers");
    page.hasLeftovers = true;
  }
  if (page.groups.empty()) page.noMatch = localized("No item has that in its name or path.");
  return page;
}

} // namespace korvell
