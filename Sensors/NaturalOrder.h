#pragma once

#include <string_view>

namespace korvell {

/// Whether a text comes before another one as people count: runs of digits are numbers, so that "Core 2"
/// precedes "Core 10"; letters are told apart by case only where nothing else differs. Total: texts that
/// differ are ordered.
bool comesNaturallyBefore(std::string_view a, std::string_view b);

} // namespace korvell
