#include "Platform/Formats/CodeRequirement.h"

#include <algorithm>

namespace korvell {

namespace {

bool isTeamIdentifier(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  });
}

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

std::optional<std::string> requirement(const std::string& identifier,
                                       const std::optional<std::string>& team) {
  if (!team) return "identifier " + quoted(identifier);
  if (!isTeamIdentifier(*team)) return std::nullopt;
  return "anchor apple generic and identifier " + quoted(identifier) +
         " and certificate leaf[subject.OU] = " + quoted(*team);
}

} // namespace

std::optional<std::string> CodeRequirement::forHelper(const std::optional<std::string>& team) {
  return requirement(helperIdentifier, team);
}

std::optional<std::string> CodeRequirement::forApplication(const std::optional<std::string>& team) {
  return requirement(applicationIdentifier, team);
}

} // namespace korvell
