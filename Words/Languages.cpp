#include "Words/Languages.h"

#include "Words/German/Tables.h"

namespace korvell {

namespace {

constexpr NumberStyle germanNumbers{.decimal = ",",
                                    .group = ".",
                                    .beforePercent = "\u202f",
                                    .hasDollarBehind = true,
                                    .isDayFirst = true,
                                    .hasHalfDays = false};

Language inEnglish(const SystemWords& words) { return {.code = "en", .tables = {words.english}}; }

Language inGerman(const SystemWords& words) {
  return {.code = "de",
          .tables = {words.german, german::interface(), german::health(), german::general(),
                     german::storage(), german::system(), german::tool()},
          .numbers = germanNumbers};
}

constexpr std::string_view codes[] = {"en", "de"};

/// "de" of "de_AT.UTF-8@euro".
std::string_view languagePart(std::string_view locale) {
  return locale.substr(0, locale.find_first_of("_-.@"));
}

} // namespace

std::vector<Language> languages(std::string_view code, const SystemWords& words) {
  std::vector<Language> all{inEnglish(words), inGerman(words)};
  const auto own = std::ranges::find(all, code, &Language::code);
  if (own != all.end()) std::rotate(all.begin(), own, own + 1);
  return all;
}

std::string_view languageFor(std::string_view locale, std::string_view list) {
  const auto own = languagePart(locale);
  if (own.empty() || own == "C" || own == "POSIX") return codes[0];
  while (!list.empty()) {
    const auto wanted = languagePart(list.substr(0, list.find(':')));
    for (const auto code : codes)
      if (code == wanted) return code;
    list.remove_prefix(std::min(list.size(), list.find(':') == list.npos ? list.size() : list.find(':') + 1));
  }
  const auto* known = std::ranges::find(codes, own);
  return known == std::end(codes) ? codes[0] : *known;
}

} // namespace korvell
