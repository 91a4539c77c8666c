#include "App/AppDelegate.h"

#include "App/DeepLink.h"

namespace korvell {

void AppDelegate::applicationDidFinishLaunching() const {
  if (!defaults_.boolean(hasLaunchedKey, false)) show_(std::nullopt);
}

void AppDelegate::applicationShouldHandleReopen(bool) const { show_(std::nullopt); }

void AppDelegate::applicationOpen(const std::vector<std::string>& urls) const {
  const auto section = urls.empty() ? std::nullopt : linkedSection(urls.front());
  if (section) show_(section);
}

} // namespace korvell
