#include "Base/Localization.h"

#include <atomic>

namespace korvell {

namespace {

std::vector<Language> installed(1);
std::atomic<const Language*> own = installed.data(); ///< the process's; one of the installed
std::vector<LocalizedText> ownTable;                 ///< of setLocalization()
void (*missing)(std::string_view key) = nullptr;
/// Of this thread; null: the process's own.
thread_local const Language* chosen = nullptr;

/// Whether a text has letters that run from the right: Hebrew's, Arabic's and their neighbours' (U+0590 to
/// U+07FF), which begin with these bytes in UTF-8.
bool runsFromRight(std::string_view text) {
  return std::ranges::any_of(text, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0xD6 && byte <= 0xDF;
  });
}

/// In such a text a figure and its unit stay together, and a path in its order.
constexpr std::string_view isolate = "\u2068", isolateEnd = "\u2069";

} // namespace

void setLanguages(std::vector<Language> languages) {
  if (languages.empty()) languages.resize(1);
  installed = std::move(languages);
  own = installed.data();
}

bool speakLanguage(std::string_view code) {
  const auto found = std::ranges::find(installed, code, &Language::code);
  return found != installed.end() && own.exchange(&*found) != &*found;
}

std::string_view ownLanguage() { return own.load()->code; }

void setLocalization(std::span<const LocalizedText> table) {
  ownTable.assign(table.begin(), table.end());
  std::ranges::stable_sort(ownTable, {}, &LocalizedText::key);
  setLanguages({{.tables = {ownTable}}});
}

void setMissingTextHandler(void (*handler)(std::string_view key)) { missing = handler; }

std::span<const Language> installedLanguages() { return installed; }

const Language& currentLanguage() { return chosen ? *chosen : *own.load(); }

InLanguage::InLanguage(std::string_view code) : before_(chosen) {
  const auto found = std::ranges::find(installed, code, &Language::code);
  if (found != installed.end()) chosen = &*found;
}

InLanguage::~InLanguage() { chosen = before_; }

std::string localized(std::string_view key) {
  const auto& language = currentLanguage();
  for (const auto table : language.tables) {
    const auto found = std::ranges::lower_bound(table, key, {}, &LocalizedText::key);
    if (found != table.end() && found->key == key) return std::string(found->text);
  }
  if (missing && language.code != "en") missing(key);
  return std::string(key);
}

std::string localized(std::string_view key, std::span<const LocalizedValue> values) {
  const std::string text = localized(key);
  const bool isolates = runsFromRight(text);
  std::string result;
  for (size_t i = 0; i < text.size();) {
    const auto close = text[i] == '{' ? text.find('}', i) : std::string::npos;
    const auto* value = close == std::string::npos ? nullptr : [&]() -> const std::string* {
      const auto name = std::string_view(text).substr(i + 1, close - i - 1);
      for (const auto& [key, inserted] : values)
        if (key == name) return &inserted;
      return nullptr;
    }();
    if (value) {
      if (isolates) result += isolate;
      result += *value;
      if (isolates) result += isolateEnd;
      i = close + 1;
    } else {
      result += text[i++];
    }
  }
  return result;
}

} // namespace korvell
