#include "App/DeepLink.h"

#include "Base/Text.h"

namespace korvell {

namespace {

constexpr std::string_view prefix = "korvell://page";

} // namespace

std::optional<SidebarItem> linkedSection(std::string_view url) {
  url = url.substr(0, url.find_first_of("?#"));
  if (lowercased(url.substr(0, prefix.size())) != prefix) return std::nullopt;
  url.remove_prefix(prefix.size());
  if (!url.empty() && url.front() != '/') return std::nullopt; // "pages", "page:80", "page@elsewhere"
  while (url.ends_with('/')) url.remove_suffix(1);
  return fromRawValue<SidebarItem>(url.substr(url.rfind('/') + 1)).value_or(SidebarItem::overview);
}

std::string deepLink(SidebarItem section) {
  return std::string(prefix) + "/" + std::string(rawValue(section));
}

} // namespace korvell
