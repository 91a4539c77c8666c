#pragma once
// Whether Korvell is light or dark, as the user picked it; stored in the settings under "appearance".

#include "Base/Enum.h"
#include "Platform/UserDefaults.h"

namespace korvell {

enum class AppearanceChoice { system, light, dark };

template <>
struct EnumTable<AppearanceChoice> {
  using enum AppearanceChoice;
  static constexpr EnumCase<AppearanceChoice> cases[] = {
      {system, "system", "System"}, {light, "light", "Light"}, {dark, "dark", "Dark"}};
};

inline constexpr std::string_view appearanceKey = "appearance";

/// A missing or unknown value means the system's.
inline AppearanceChoice appearanceChoice(const UserDefaults& defaults) {
  const auto stored = defaults.string(appearanceKey);
  return stored ? fromRawValue<AppearanceChoice>(*stored).value_or(AppearanceChoice::system)
                : AppearanceChoice::system;
}

} // namespace korvell
