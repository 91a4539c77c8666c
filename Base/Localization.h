#pragma once
// Every visible text goes through localized(); its key is the English text itself.
//
// A table is installed once by main before any thread starts (a platform's words, such as "Your computer"
// for "Your Mac", are a table like any other) and never changes afterwards, so that reading needs no lock.
// A key without an entry is its own translation.

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace korvell {

struct LocalizedText {
  std::string_view key;
  std::string_view text;
};

/// Installs the tables to look in, the first first. Only main and tests call this.
void setLocalization(std::span<const LocalizedText> table);

std::string localized(std::string_view key);

/// Looks the key up and then replaces each "{name}" in it by its value. Values are not looked up, and a
/// value that itself contains braces is left as it is. An unknown name stays as it stands.
using LocalizedValue = std::pair<std::string_view, std::string>;
std::string localized(std::string_view key, std::span<const LocalizedValue> values);
inline std::string localized(std::string_view key, std::initializer_list<LocalizedValue> values) {
  return localized(key, std::span(values.begin(), values.size()));
}

} // namespace korvell
