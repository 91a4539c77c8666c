#include "UI/Storage/CleanupQuestion.h"

#include <algorithm>
#include <vector>

namespace korvell {

namespace {

constexpr std::size_t mostPaths = 4; // that the message lists

std::size_t itemCount(const ActionDescription& description) {
  const auto* items = description.about.find("items");
  return items && items->asArray() ? items->asArray()->size() : 0;
}

std::vector<std::string> linesOf(const std::string& message) {
  std::vector<std::string> lines(1);
  for (const char each : message) {
    if (each == '\n')
      lines.emplace_back();
    else
      lines.back() += each;
  }
  return lines;
}

} // namespace

Question cleanupQuestion(const ActionDescription& description) {
  Question question{.icon = Icon::trash, .title = description.title, .text = description.message};
  question.action = description.button;
  question.permanent = description.isPermanent;
  // What goes to the Trash from one category: a sentence, the paths, "and 1 more", a sentence.
  const auto lines = linesOf(description.message);
  const auto count = itemCount(description), shown = std::min(count, mostPaths);
  const std::size_t rest = count > shown ? 1 : 0;
  if (description.isPermanent || count == 0 || lines.size() != shown + rest + 2) return question;
  question.text = lines.front();
  question.well.assign(lines.begin() + 1, lines.begin() + 1 + std::ptrdiff_t(shown));
  if (rest > 0) question.more = lines[shown + 1];
  question.note = lines.back();
  return question;
}

} // namespace korvell
