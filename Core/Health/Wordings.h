#pragma once
// What was found and is told on, in every language that is installed.
//
// A sentence with figures in it can't be translated once it is said, and who reads it later (a terminal, an
// agent, the application after its language was changed) may speak another language than who found it. So it
// is said in all of them at once. As JSON the title and the detail are English, and "in" holds the others by
// their codes: {"title": …, "detail": …, "in": {"de": {"title": …, "detail": …}}}.

#include "Base/Localization.h"
#include "Base/Value.h"

#include <map>
#include <string>

namespace korvell {

struct Wording {
  std::string title, detail;
  bool operator==(const Wording&) const = default;
};

/// By the languages' codes. Empty where only one language is installed.
using Wordings = std::map<std::string, Wording, std::less<>>;

/// What `say` says in each of the languages.
template <class Say>
Wordings wordingsOf(Say say) {
  Wordings wordings;
  const auto all = installedLanguages();
  for (const auto& language : all) {
    if (all.size() < 2) break;
    const InLanguage speaking(language.code);
    wordings.emplace(language.code, say());
  }
  return wordings;
}

/// The record, whose title and detail are those of one of these languages, as JSON for readers of any.
void tellWordings(const Wordings& wordings, Value& record);
Wordings readWordings(const Value& record);
/// The one of the language in effect; null when there is none.
const Wording* wordingHere(const Wordings& wordings);

/// Has a record that was read speak the language in effect.
template <class Record>
void speakHere(Record& record) {
  const auto* wording = wordingHere(record.wordings);
  if (!wording) return;
  record.title = wording->title;
  record.detail = wording->detail;
}

} // namespace korvell
