#include "Base/Localization.h"

namespace korvell {

namespace {
std::span<const LocalizedText> installed;
}

void setLocalization(std::span<const LocalizedText> table) { installed = table; }

std::string localized(std::string_view key) {
  for (const auto& entry : installed)
    if (entry.key == key) return std::string(entry.text);
  return std::string(key);
}

std::string localized(std::string_view key, std::span<const LocalizedValue> values) {
  const std::string text = localized(key);
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
      result += *value;
      i = close + 1;
    } else {
      result += text[i++];
    }
  }
  return result;
}

} // namespace korvell
