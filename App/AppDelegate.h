#pragma once
// When the main window shows itself: at the first launch ever, when the application is opened again, and for
// links to its sections. Otherwise Korvell stays in the menu bar. Main thread only.

#include "Core/Machine/Models.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class AppDelegate {
public:
  /// Set once the main window has been shown.
  static constexpr const char* hasLaunchedKey = "hasLaunched";
  using Show = std::function<void(std::optional<SidebarItem>)>;

  AppDelegate(const UserDefaults& defaults, Show show) : defaults_(defaults), show_(std::move(show)) {}

  void applicationDidFinishLaunching() const;
  void applicationShouldHandleReopen(bool hasVisibleWindows) const;
  /// Looks at the first address alone; one that is no link to a section does nothing.
  void applicationOpen(const std::vector<std::string>& urls) const;

private:
  const UserDefaults& defaults_;
  const Show show_;
};

} // namespace korvell
