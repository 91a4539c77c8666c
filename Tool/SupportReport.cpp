#include "Tool/SupportReport.h"

#include "Base/Format.h"
#include "Base/Text.h"

#include <algorithm>
#include <cctype>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::string_view leftOut = "(left out: it names a path)";
constexpr std::string_view takenOut = "(name)";
/// Whose files have the same names on every machine.
constexpr std::string_view systemPlaces[] = {"/proc/",          "/sys/",    "/dev/",
                                             "/etc/os-release", "/usr/",    "/run/korvell/",
                                             "/run/dbus/",      "/System/", "/Library/"};
/// Users that every system has.
constexpr std::string_view everybodys[] = {"root", "user", "localhost"};

bool isWordPart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || static_cast<signed char>(c) < 0;
}

bool namesAPath(std::string_view text) {
  for (std::size_t at = text.find_first_of("/~"); at != std::string_view::npos;
       at = text.find_first_of("/~", at + 1)) {
    if (at > 0 && (isWordPart(text[at - 1]) || text[at - 1] == '/' || text[at - 1] == '*')) continue;
    const auto path = text.substr(at);
    if (!std::ranges::any_of(systemPlaces, [&](auto place) { return path.starts_with(place); })) return true;
    at += path.find_first_of(" ,;)\"'") == std::string_view::npos ? path.size() - 1
                                                                  : path.find_first_of(" ,;)\"'");
  }
  return false;
}

/// Where a name stands by itself, whatever its case.
std::string without(std::string_view text, std::string_view name) {
  const auto lower = lowercased(text), wanted = lowercased(name);
  std::string result;
  std::size_t from = 0;
  for (auto at = lower.find(wanted); at != std::string::npos; at = lower.find(wanted, at + 1)) {
    const auto end = at + wanted.size();
    if (at < from || (at > 0 && isWordPart(lower[at - 1])) || (end < lower.size() && isWordPart(lower[end])))
      continue;
    result += text.substr(from, at - from);
    result += takenOut;
    from = end;
  }
  return result += text.substr(from);
}

/// Without those that tell nobody.
std::vector<std::string> tellingNames(std::vector<std::string> names, std::string_view system) {
  std::erase_if(names, [system](const std::string& name) {
    return name.empty() || std::ranges::find(everybodys, lowercased(name)) != std::end(everybodys) ||
           without(system, name) != system;
  });
  return names;
}

} // namespace

SupportReport::SupportReport(Date written, std::vector<std::string> names, std::string_view system)
    : names_(tellingNames(std::move(names), system)) {
  text_ = "Korvell support report of " + rfc3339(written) +
          "\n"
          "It names no project, file, machine, user or application. Read it before you hand it on.\n";
}

void SupportReport::section(std::string_view title) { text_ += "\n" + std::string(title) + "\n"; }

void SupportReport::fact(std::string_view label, std::string_view text) {
  text_ += fmt::format("  {}: {}\n", label, nameless(text));
}

void SupportReport::source(const SourceReport& source) {
  text_ += fmt::format("  {} | {} | {} | {}\n", nameless(source.name), nameless(source.source),
                       rawValue(source.state), source.microseconds ? timeText(*source.microseconds) : "–");
  if (!source.reason.empty()) text_ += "    " + nameless(source.reason) + "\n";
}

void SupportReport::error(const LoggedError& error) {
  text_ += fmt::format("  {} | {} | {}× | {}\n", rfc3339(error.date), nameless(error.version), error.count,
                       nameless(error.text));
}

std::string SupportReport::nameless(std::string_view text) const {
  if (namesAPath(text)) return std::string(leftOut);
  auto result = escapedControls(text);
  for (const auto& name : names_) result = without(result, name);
  return result;
}

std::string timeText(double microseconds) {
  return microseconds < 1000 ? Format::decimal(microseconds, 0) + " µs"
                             : Format::decimal(microseconds / 1000, 1) + " ms";
}

} // namespace korvell
