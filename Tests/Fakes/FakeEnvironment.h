#pragma once
// Environment variables as a test sets them.

#include "Base/UserFolders.h"

#include <map>

namespace korvell {

inline Environment fakeEnvironment(std::map<std::string, std::string, std::less<>> variables) {
  return [variables = std::move(variables)](std::string_view name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    return found == variables.end() ? std::nullopt : std::optional(found->second);
  };
}

} // namespace korvell
