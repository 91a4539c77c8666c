#include "UI/Parts/Reasons.h"

#include "Base/Localization.h"

#include <algorithm>

namespace korvell {

std::string toldReason(KnownPart part, const std::vector<SourceReport>& sources) {
  auto words = reasonFor(part, sources);
  if (words.empty()) return words;
  for (const auto& source : sources) {
    const bool isMissing = source.state != SourceReport::State::readable && !source.remedy.empty() &&
                           std::ranges::find(source.parts, part) != source.parts.end();
    if (isMissing && words.find(source.remedy) == std::string::npos) words += " " + source.remedy;
  }
  return words;
}

std::string reasonOf(KnownPart part, Knowledge state, const std::vector<SourceReport>& sources) {
  auto told = toldReason(part, sources);
  if (!told.empty()) return told;
  return state == Knowledge::refused ? localized("Not readable without further rights")
                                     : localized("Not measured on this machine");
}

} // namespace korvell
