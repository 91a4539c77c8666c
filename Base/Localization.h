#pragma once
// Every visible text goes through localized(); its key is the English text itself.
//
// The languages are installed once by main before any thread starts and never change afterwards, so that
// reading needs no lock; which of them the process speaks may change at any time. A language is a few tables,
// looked through in order: a platform's words, such as "Your computer" for "Your Mac", are a table like any
// other. Each is sorted when it is compiled, so that a text costs a few comparisons and starting costs
// nothing. A key without an entry is its own translation.
//
// What programs read must not depend on who reads it: InLanguage says a text in another language than the
// process's own.

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvell {

struct LocalizedText {
  std::string_view key;
  std::string_view text;
};

/// The table as a language wants it. A key that is there twice does not compile.
template <std::size_t size>
consteval std::array<LocalizedText, size> sortedTexts(const LocalizedText (&texts)[size]) {
  std::array<LocalizedText, size> sorted{};
  std::ranges::copy(texts, sorted.begin());
  std::ranges::sort(sorted, {}, &LocalizedText::key);
  if (std::ranges::adjacent_find(sorted, {}, &LocalizedText::key) != sorted.end())
    throw "a key is there twice";
  return sorted;
}

/// How a language writes numbers, days and times.
struct NumberStyle {
  std::string_view decimal = ".";
  std::string_view group = ",";
  std::string_view beforePercent{}; ///< between a number and its "%" or "°C"
  bool hasDollarBehind = false;     ///< "3.50 $" rather than "$3.50"
  bool isDayFirst = false;          ///< "01.03.2026" rather than "2026-03-01"
  bool hasHalfDays = true;          ///< "9:05 PM" in sentences
};

struct Language {
  std::string_view code = "en";
  std::vector<std::span<const LocalizedText>>
      tables{}; ///< each sorted by key; the first that has one decides
  NumberStyle numbers{};
};

/// A platform's own words, in each language.
struct SystemWords {
  std::span<const LocalizedText> english, german;
};

/// Installs the languages; the process speaks the first. Only main and tests call this.
void setLanguages(std::vector<Language> languages);
/// Has the process speak another of them from now on, on every thread; any thread may call it. False when it
/// spoke that one before or when it is not installed. What was said already keeps its words.
bool speakLanguage(std::string_view code);
/// The code of the one that the process speaks, whatever this thread does.
std::string_view ownLanguage();
/// English with this table, in any order.
void setLocalization(std::span<const LocalizedText> table);
/// Who is told each key without a text in a language other than English. For checks; null for nobody.
void setMissingTextHandler(void (*handler)(std::string_view key));

/// In the order in which they were installed.
std::span<const Language> installedLanguages();
/// The one in effect on this thread.
const Language& currentLanguage();

/// Has this thread speak another language as long as it lives; one that is not installed changes nothing.
class InLanguage {
public:
  explicit InLanguage(std::string_view code);
  ~InLanguage();
  InLanguage(const InLanguage&) = delete;
  InLanguage& operator=(const InLanguage&) = delete;

private:
  const Language* before_;
};

std::string localized(std::string_view key);

/// Looks the key up and then replaces each "{name}" in it by its value. Values are not looked up, and a
/// value that itself contains braces is left as it is. An unknown name stays as it stands.
using LocalizedValue = std::pair<std::string_view, std::string>;
std::string localized(std::string_view key, std::span<const LocalizedValue> values);
inline std::string localized(std::string_view key, std::initializer_list<LocalizedValue> values) {
  return localized(key, std::span(values.begin(), values.size()));
}

} // namespace korvell
