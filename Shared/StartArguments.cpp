#include "Shared/StartArguments.h"

#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

/// Of the toolkit, which takes each with one hyphen or two. Those with a value take it behind "=" too.
constexpr std::string_view toolkitValues[] = {
    "platform", "platformpluginpath", "platformtheme", "plugin",
    "style",    "stylesheet",         "session",       "display",
    "geometry", "qwindowgeometry",    "qwindowicon",   "qwindowtitle"};
constexpr std::string_view toolkitFlags[] = {"reverse", "widgetcount", "nograb", "dograb", "sync"};

bool isAmong(std::string_view name, std::span<const std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

} // namespace

StartArguments StartArguments::of(std::span<const char* const> arguments) {
  StartArguments read;
  bool isValue = false, areAddresses = false;
  for (const std::string_view word : arguments) {
    if (isValue || areAddresses || !word.starts_with('-')) {
      if (!isValue) read.addresses.emplace_back(word);
      isValue = false;
    } else if (word == "--") {
      areAddresses = true;
    } else if (word == "--help" || word == "-h") {
      read.wantsHelp = true;
    } else if (word == "--version") {
      read.wantsVersion = true;
    } else {
      const auto end = word.find('=');
      const auto name = word.substr(0, end).substr(word.starts_with("--") ? 2 : 1);
      if (isAmong(name, toolkitValues))
        isValue = end == word.npos;
      else if (!read.unknown && (end != word.npos || !isAmong(name, toolkitFlags)))
        read.unknown = word;
    }
  }
  return read;
}

std::optional<StartAnswer> startAnswer(const StartArguments& arguments, std::string_view program,
                                       std::string_view version, const std::string& purpose,
                                       std::string_view operands) {
  const std::string name(program);
  if (arguments.unknown)
    return StartAnswer{
        name + ": " +
            localized("Not expected here: {words}.", {{"words", escapedControls(*arguments.unknown)}}) +
            "\n" + localized("Run {command} --help for what it can do.", {{"command", name}}) + "\n",
        2};
  if (arguments.wantsHelp)
    return StartAnswer{purpose + "\n" + localized("Usage") + ": " + name + " [" + localized("OPTIONS") + "]" +
                       (operands.empty() ? "" : " ") + std::string(operands) + "\n\n" + localized("Options") +
                       ":\n  -h, --help  " + localized("Print this help and exit") + "\n  --version   " +
                       localized("Print the version and exit") + "\n"};
  if (arguments.wantsVersion) return StartAnswer{name + " " + std::string(version) + "\n"};
  return std::nullopt;
}

} // namespace korvell
