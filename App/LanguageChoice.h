#pragma once
// The language of the application, as the user picked it; stored in the settings under "language".

#include "Base/Enum.h"
#include "Platform/UserDefaults.h"
#include "Words/Languages.h"

namespace korvell {

enum class LanguageChoice { system, english, german };

template <>
struct EnumTable<LanguageChoice> {
  using enum LanguageChoice;
  /// A raw value is the language's code, and a language is called by its own name in every other.
  static constexpr EnumCase<LanguageChoice> cases[] = {
      {system, "system", "System"}, {english, "en", "English"}, {german, "de", "Deutsch"}};
};

inline constexpr std::string_view languageKey = "language";

/// A missing or unknown value means the system's.
inline LanguageChoice languageChoice(const UserDefaults& defaults) {
  const auto stored = defaults.string(languageKey);
  return stored ? fromRawValue<LanguageChoice>(*stored).value_or(LanguageChoice::system)
                : LanguageChoice::system;
}

/// The code of the language that was picked, else the one that languageFor() finds.
inline std::string_view languageCode(const UserDefaults& defaults, std::string_view locale,
                                     std::string_view list) {
  const auto choice = languageChoice(defaults);
  return choice == LanguageChoice::system ? languageFor(locale, list) : rawValue(choice);
}

} // namespace korvell
