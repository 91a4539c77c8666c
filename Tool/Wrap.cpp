#include "Tool/Wrap.h"

#include "Base/Text.h"

namespace korvell {

std::vector<std::string> wrapped(std::string_view text, int columns) {
  std::vector<std::string> lines;
  int used = 0;
  for (const auto word : split(text, ' ')) {
    if (word.empty()) continue;
    const int width = displayWidth(word);
    if (lines.empty() || used + 1 + width > columns) {
      lines.emplace_back(word);
      used = width;
    } else {
      lines.back().append(" ").append(word);
      used += 1 + width;
    }
  }
  return lines;
}

} // namespace korvell
