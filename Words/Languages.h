#pragma once
// The languages that Korvell speaks, and which of them a user reads.

#include "Base/Localization.h"

#include <string_view>
#include <vector>

namespace korvell {

/// All of them, the one with this code first; English first for a code that is not among them.
std::vector<Language> languages(std::string_view code, const SystemWords& words = {});

/// The code of the language for a locale ("de_AT.UTF-8", "en-GB"; empty for none) and the list that may stand
/// in LANGUAGE ("fr:de:en"), whose first known one decides. The list means nothing in the locales C and
/// POSIX, and a language that Korvell does not speak is English.
std::string_view languageFor(std::string_view locale, std::string_view list = {});

} // namespace korvell
