#include "Tool/NearestWord.h"

#include "Base/Text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace korvell {

namespace {

constexpr std::size_t longestWord = 64;

/// Edits between two words; two letters that changed places are one.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast, last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = a[i - 1] == b[j - 1];
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (same ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::exchange(last, row);
  }
  return last[b.size()];
}

} // namespace

std::optional<std::string> nearestWord(std::string_view word, std::span<const std::string> candidates) {
  if (word.empty() || word.size() > longestWord) return std::nullopt;
  constexpr std::size_t shortestBeginning = 3;
  const auto typed = lowercased(word);
  const std::string* nearest = nullptr;
  std::size_t fewest = std::max<std::size_t>(1, typed.size() / 3) + 1;
  for (const auto& candidate : candidates) {
    const auto other = lowercased(candidate);
    const bool begins = typed.size() >= shortestBeginning && other.starts_with(typed);
    const auto edits = begins ? 1 : distance(typed, other);
    if (edits < fewest) {
      fewest = edits;
      nearest = &candidate;
    }
  }
  return nearest ? std::optional(*nearest) : std::nullopt;
}

} // namespace korvell
