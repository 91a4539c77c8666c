#include "Platform/Formats/AutostartEntry.h"

#include "Base/Text.h"
#include "Platform/Formats/KeyFile.h"

#include <vector>

namespace korvell {

namespace {

constexpr std::string_view group = "Desktop Entry";
constexpr std::string_view hidden = "Hidden", gnome = "X-GNOME-Autostart-enabled";

std::string newEntry(const AutostartTitle& title) {
  return "[Desktop Entry]\n"
         "Type=Application\n"
         "Name=" +
         std::string(title.name) + "\nComment=" + std::string(title.comment) + "\nIcon=korvell\n";
}

std::string_view keyOf(std::string_view line) {
  const auto end = line.find('=');
  return end == std::string_view::npos ? std::string_view() : trimmed(line.substr(0, end));
}

struct Setting {
  std::string_view key;
  std::string value; ///< empty: the line goes
  bool isWritten = false;
};

/// The settings in the entry's own group, replaced where they stand, the rest at the group's end.
std::string withSettings(std::string_view text, std::vector<Setting> settings) {
  std::string result;
  bool isOwn = false;
  const auto finishGroup = [&] {
    for (auto& setting : settings)
      if (isOwn && !std::exchange(setting.isWritten, true) && !setting.value.empty())
        result += std::string(setting.key) + "=" + setting.value + "\n";
  };
  while (!text.empty()) {
    const auto end = std::min(text.find('\n'), text.size());
    const auto line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (trimmed(line).starts_with('[')) {
      finishGroup();
      isOwn = trimmed(line) == "[" + std::string(group) + "]";
    }
    Setting* replaced = nullptr;
    for (auto& setting : settings)
      if (isOwn && keyOf(line) == setting.key) replaced = &setting;
    if (!replaced) {
      result += std::string(line) + "\n";
    } else if (!std::exchange(replaced->isWritten, true) && !replaced->value.empty()) {
      result += std::string(replaced->key) + "=" + replaced->value + "\n";
    }
  }
  finishGroup();
  return result;
}

} // namespace

bool isAutostartEnabled(std::string_view entry) {
  const auto file = KeyFile::parseDesktopEntry(entry);
  return file.last(group, "Exec") && file.last(group, hidden) != "true" && file.last(group, gnome) != "false";
}

std::string autostartEntry(std::string_view text, std::string_view program, bool enabled,
                           const AutostartTitle& title) {
  const bool isEntry = KeyFile::parseDesktopEntry(text).last(group, "Type").has_value();
  const auto fresh = newEntry(title);
  if (!isEntry) text = fresh;
  if (!enabled) return withSettings(text, {{hidden, "true"}});
  return withSettings(text, {{"Exec", desktopEntryWord(program)}, {hidden, ""}, {gnome, ""}});
}

std::string desktopEntryWord(std::string_view path) {
  // Two layers: what is special inside quotes takes a backslash, and a backslash is written twice in any
  // value.
  std::string word = "\"";
  for (const char c : path) {
    if (c == '"' || c == '`' || c == '$') word += "\\\\";
    if (c == '\\') word += "\\\\\\";
    if (c == '%') word += '%';
    word += c;
  }
  return word + "\"";
}

} // namespace korvell
