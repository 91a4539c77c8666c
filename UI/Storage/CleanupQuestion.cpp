#include "UI/Storage/CleanupQuestion.h"

#include <string_view>
#include <vector>

namespace korvell {

namespace {

constexpr std::size_t mostPaths = 4; // that the message lists of each category

std::vector<std::string> divided(const std::string& text, std::string_view separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0;;) {
    const auto end = text.find(separator, begin);
    parts.push_back(text.substr(begin, end - begin));
    if (end == std::string::npos) return parts;
    begin = end + separator.size();
  }
}

bool isPath(const std::string& line) { return line.starts_with('/') || line.starts_with('~'); }

/// What goes to the Trash is a sentence, the paths, "and 1 more", a sentence; whatever else has its words
/// alone.
Passage passageOf(const std::string& paragraph) {
  const auto lines = divided(paragraph, "\n");
  if (lines.size() < 3) return {.text = paragraph};
  Passage passage{.text = lines.front(), .note = lines.back()};
  for (std::size_t i = 1; i + 1 < lines.size(); ++i) {
    const bool isMore = passage.well.size() == mostPaths && i + 2 == lines.size();
    if (isMore)
      passage.more = lines[i];
    else if (isPath(lines[i]))
      passage.well.push_back(lines[i]);
    else
      return {.text = paragraph};
  }
  return passage;
}

} // namespace

Question cleanupQuestion(const ActionDescription& description) {
  Question question{.icon = Icon::trash, .title = description.title};
  for (const auto& paragraph : divided(description.message, "\n\n"))
    question.passages.push_back(passageOf(paragraph));
  question.action = description.button;
  question.permanent = description.isPermanent;
  return question;
}

} // namespace korvell
