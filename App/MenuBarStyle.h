#pragma once
// What the menu bar's item shows; stored in the settings under "menuBarStyle".

#include "Base/Enum.h"
#include "Platform/UserDefaults.h"

namespace korvell {

enum class MenuBarStyle { icon, score, cpuAndMemory, graphs };

template <>
struct EnumTable<MenuBarStyle> {
  using enum MenuBarStyle;
  static constexpr EnumCase<MenuBarStyle> cases[] = {{icon, "icon", "Icon only"},
                                                     {score, "score", "Health score"},
                                                     {cpuAndMemory, "cpuAndMemory", "CPU and memory"},
                                                     {graphs, "graphs", "Mini graphs"}};
};

inline constexpr std::string_view menuBarStyleKey = "menuBarStyle";

/// A missing or unknown value means the icon.
inline MenuBarStyle menuBarStyle(const UserDefaults& defaults) {
  const auto stored = defaults.string(menuBarStyleKey);
  return stored ? fromRawValue<MenuBarStyle>(*stored).value_or(MenuBarStyle::icon) : MenuBarStyle::icon;
}

} // namespace korvell
