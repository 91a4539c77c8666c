#pragma once
// Why a figure is "–": what its sources tell, as the examination does in a terminal, with what would help.

#include "Platform/Diagnostics.h"

#include <string>
#include <vector>

namespace korvell {

/// The sentences of a part's sources that can't be read: their reasons, then what it would take. Empty where
/// they tell nothing.
std::string toldReason(KnownPart part, const std::vector<SourceReport>& sources);
/// The same, or what the state alone says; never empty.
std::string reasonOf(KnownPart part, Knowledge state, const std::vector<SourceReport>& sources = {});

} // namespace korvell
