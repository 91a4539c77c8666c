#include "Platform/Formats/UserDirs.h"

#include "Base/Text.h"

namespace korvell {
namespace {

/// What stands between the quotes at the start of `text`; nothing without the closing one.
std::optional<std::string> quoted(std::string_view text) {
  if (!text.starts_with('"')) return std::nullopt;
  std::string value;
  for (size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\' && ++i == text.size()) break;
    value += text[i];
  }
  return std::nullopt;
}

} // namespace

std::optional<std::string> userDirectory(std::string_view text, std::string_view name,
                                         const std::string& home) {
  const std::string start = "XDG_" + std::string(name) + "_DIR=";
  std::optional<std::string> found;
  for (auto line : splitLines(text)) {
    line = trimmed(line);
    if (!line.starts_with(start)) continue;
    auto value = quoted(line.substr(start.size()));
    if (!value) continue;
    if (*value == "$HOME" || value->starts_with("$HOME/")) value = home + value->substr(5);
    if (!value->starts_with('/')) continue;
    while (value->size() > 1 && value->back() == '/') value->pop_back();
    found = value;
  }
  return found;
}

} // namespace korvell
