#include "Platform/Formats/LaunchJobs.h"

#include "Base/Text.h"

namespace korvell {

std::set<std::string> parseLaunchJobs(std::string_view listing) {
  std::set<std::string> labels;
  const auto lines = splitLines(listing);
  for (size_t i = 1; i < lines.size(); ++i) {
    const auto first = lines[i].find('\t');
    if (first == std::string_view::npos) continue;
    const auto second = lines[i].find('\t', first + 1);
    if (second == std::string_view::npos) continue;
    const auto label = lines[i].substr(second + 1);
    if (!label.empty()) labels.emplace(label);
  }
  return labels;
}

} // namespace korvell
