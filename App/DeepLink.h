#pragma once
// Links that open a section: "korvell://page/memory". Anything may come with that scheme, from any program
// and any page of the web, so a link opens a section and can do nothing else.

#include "Core/Machine/Models.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// The section that a link names, the overview where its last path component names none; nothing for what is
/// no such link. Scheme and host are told apart without regard to case, as in every address.
std::optional<SidebarItem> linkedSection(std::string_view url);

/// The link to a section.
std::string deepLink(SidebarItem section);

} // namespace korvell
