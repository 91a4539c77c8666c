#pragma once
// What a list's filter lets through.

#include "Base/Text.h"

#include <string_view>

namespace korvell {

/// The words stand somewhere in the name, in any case; none stand in every name.
inline bool matches(std::string_view name, std::string_view filter) {
  return filter.empty() || lowercased(name).find(lowercased(filter)) != std::string::npos;
}

} // namespace korvell
