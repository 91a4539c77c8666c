#include "Platform/Formats/KeyFile.h"

#include "Base/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

void KeyFile::readLine(std::string_view line, std::string& group) {
  if (line.starts_with('[') && line.ends_with(']')) {
    group = line.substr(1, line.size() - 2);
    return;
  }
  const auto equals = line.find('=');
  if (equals == std::string_view::npos) return;
  assignments_.push_back(
      {group, std::string(trimmed(line.substr(0, equals))), std::string(trimmed(line.substr(equals + 1)))});
}

KeyFile KeyFile::parseDesktopEntry(std::string_view text) {
  KeyFile file;
  std::string group;
  for (const auto raw : splitLines(text))
    if (const auto line = trimmed(raw); !line.starts_with('#')) file.readLine(line, group);
  return file;
}

KeyFile KeyFile::parseUnit(std::string_view text) {
  KeyFile file;
  std::string group, pending;
  for (const auto raw : splitLines(text)) {
    const auto line = trimmed(raw);
    if (line.starts_with('#') || line.starts_with(';')) continue; // also within a continued line
    pending += line;
    if (pending.ends_with('\\')) {
      pending.back() = ' ';
      continue;
    }
    file.readLine(trimmed(pending), group);
    pending.clear();
  }
  file.readLine(trimmed(pending), group);
  return file;
}

std::optional<std::string_view> KeyFile::last(std::string_view group, std::string_view key) const {
  const auto found = std::find_if(assignments_.rbegin(), assignments_.rend(),
                                  [&](const Assignment& a) { return a.group == group && a.key == key; });
  if (found == assignments_.rend()) return std::nullopt;
  return found->value;
}

std::vector<std::string_view> KeyFile::all(std::string_view group, std::string_view key) const {
  std::vector<std::string_view> values;
  for (const auto& assignment : assignments_) {
    if (assignment.group != group || assignment.key != key) continue;
    if (assignment.value.empty())
      values.clear();
    else
      values.push_back(assignment.value);
  }
  return values;
}

namespace {

constexpr std::string_view space = " \t\n\r";

bool isSpace(char c) { return space.find(c) != std::string_view::npos; }

/// The escapes of every value of a desktop entry, which are undone before its own quoting is looked at.
std::string desktopValue(std::string_view raw) {
  constexpr std::pair<char, char> escapes[] = {
      {'s', ' '}, {'n', '\n'}, {'t', '\t'}, {'r', '\r'}, {'\\', '\\'}};
  std::string value;
  for (size_t i = 0; i < raw.size(); ++i) {
    const auto* escape = std::end(escapes);
    if (raw[i] == '\\' && i + 1 < raw.size())
      escape =
          std::find_if(std::begin(escapes), std::end(escapes), [&](auto e) { return e.first == raw[i + 1]; });
    if (escape == std::end(escapes)) {
      value += raw[i];
    } else {
      value += escape->second;
      ++i;
    }
  }
  return value;
}

/// The byte that so many digits say, or nothing.
std::optional<char> byteOf(std::string_view digits, std::size_t count, int base) {
  int value = 0;
  if (digits.size() < count) return std::nullopt;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + count, value, base);
  if (error != std::errc{} || end != digits.data() + count || value > 255) return std::nullopt;
  return char(value);
}

/// Of \xNN and \NNN: the byte and how many characters stand behind the backslash.
std::optional<std::pair<char, std::size_t>> numericEscape(std::string_view escape) {
  if (escape.starts_with('x')) {
    if (const auto byte = byteOf(escape.substr(1), 2, 16)) return {{*byte, 3}};
  } else if (const auto byte = byteOf(escape, 3, 8)) {
    return {{*byte, 3}};
  }
  return std::nullopt;
}

} // namespace

std::optional<std::vector<std::string>> desktopEntryArguments(std::string_view exec) {
  const std::string line = desktopValue(exec);
  std::vector<std::string> arguments;
  bool inArgument = false, inQuotes = false;
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (!inQuotes && isSpace(c)) {
      inArgument = false;
      continue;
    }
    if (!inArgument) arguments.emplace_back();
    inArgument = true;
    if (c == '"') {
      inQuotes = !inQuotes;
    } else if (c == '\\' && i + 1 < line.size()) {
      arguments.back() += line[++i];
    } else {
      arguments.back() += c;
      if (c == '%' && i + 1 < line.size() && line[i + 1] == '%') ++i;
    }
  }
  if (inQuotes || arguments.empty() || arguments.front().empty()) return std::nullopt;
  return arguments;
}

std::optional<std::string> desktopEntryProgram(std::string_view exec) {
  const auto arguments = desktopEntryArguments(exec);
  if (!arguments) return std::nullopt;
  const auto& first = arguments->front();
  if (first != "env" && !first.ends_with("/env")) return first;
  const auto program =
      std::find_if(arguments->begin() + 1, arguments->end(),
                   [](const std::string& argument) { return argument.find('=') == std::string::npos; });
  // An option of env may take an argument of its own.
  if (program == arguments->end() || program->starts_with('-')) return std::nullopt;
  return *program;
}

std::optional<std::string> unitProgram(std::string_view execStart) {
  constexpr std::string_view prefixes = "@-:+!|";
  const auto begin = execStart.find_first_not_of(prefixes);
  if (begin == std::string_view::npos) return std::nullopt;
  const auto line = trimmed(execStart.substr(begin));
  std::string program;
  char quote = 0;
  for (size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (!quote && isSpace(c)) break;
    if (quote ? c == quote : c == '"' || c == '\'') {
      quote = quote ? 0 : c;
    } else if (c == '\\' && i + 1 < line.size()) {
      const auto numeric = numericEscape(line.substr(i + 1));
      program += numeric ? numeric->first : line[i + 1] == 's' ? ' ' : line[i + 1];
      i += numeric ? numeric->second : 1;
    } else {
      program += c;
    }
  }
  if (quote || program.empty()) return std::nullopt;
  return program;
}

std::string unitNameEscaped(std::string_view text) {
  std::string escaped;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == ':' || c == '_' || (c == '.' && i > 0);
    if (c == '/')
      escaped += '-';
    else if (plain)
      escaped += c;
    else
      escaped += fmt::format("\\x{:02x}", static_cast<unsigned char>(c));
  }
  return escaped;
}

std::vector<std::string> dropInNames(std::string_view unit) {
  const auto point = unit.rfind('.');
  if (point == std::string_view::npos || point == 0) return {};
  const auto type = unit.substr(point); // ".service"
  const auto at = std::min(unit.find('@'), point);
  const auto instance = unit.substr(at, point - at);
  std::vector<std::string> names{std::string(unit) + ".d"};
  if (instance.size() > 1) names.push_back(fmt::format("{}@{}.d", unit.substr(0, at), type));
  // "a-b-c" is also meant by "a-b-" and "a-".
  auto prefix = unit.substr(0, at);
  for (auto dash = prefix.rfind('-', prefix.size() - 2); at > 1 && dash != std::string_view::npos;
       dash = dash == 0 ? std::string_view::npos : prefix.rfind('-', dash - 1))
    names.push_back(fmt::format("{}{}{}.d", prefix.substr(0, dash + 1), instance.empty() ? "" : "@", type));
  return names;
}

std::string dropInNameOfType(std::string_view unit) {
  return std::string(unit.substr(std::min(unit.rfind('.'), unit.size() - 1) + 1)) + ".d";
}

std::string autostartUnitName(std::string_view desktopFileName) {
  constexpr std::string_view suffix = ".desktop";
  if (desktopFileName.ends_with(suffix)) desktopFileName.remove_suffix(suffix.size());
  return "app-" + unitNameEscaped(desktopFileName) + "@autostart.service";
}

} // namespace korvell
