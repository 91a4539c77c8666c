#include "Core/AIUsage/Names.h"

#include "Base/LocalTime.h"
#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

std::vector<std::string_view> pieces(std::string_view text, char separator) {
  auto parts = split(text, separator);
  std::erase_if(parts, [](std::string_view part) { return part.empty(); });
  return parts;
}

constexpr std::string_view homeName = "Home";

} // namespace

std::string projectName(std::optional<std::string_view> cwd, std::string_view folder, std::string_view home) {
  if (!cwd || cwd->empty()) {
    const auto words = pieces(folder, '-');
    return std::string(words.empty() ? homeName : words.back());
  }
  auto components = pieces(*cwd, '/');
  const auto worktrees = std::find(components.begin(), components.end(), "worktrees");
  if (worktrees != components.end()) {
    if (worktrees != components.begin() && *(worktrees - 1) == ".claude")
      components.erase(worktrees - 1, components.end());
    else if (worktrees + 1 != components.end())
      return std::string(*(worktrees + 1));
  }
  std::string path;
  for (const auto component : components) path.append("/").append(component);
  if (path.empty()) path = "/";
  return std::string(components.empty() || path == home ? homeName : components.back());
}

std::string_view normalizedModel(std::string_view model) {
  model = model.substr(0, model.find('['));
  constexpr std::size_t suffix = 9; // "-20250929"
  if (model.size() < suffix || model[model.size() - suffix] != '-') return model;
  const auto digits = model.substr(model.size() - suffix + 1);
  const bool isDate = std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; });
  return isDate ? model.substr(0, model.size() - suffix) : model;
}

std::optional<std::int64_t> logInstant(std::optional<std::string_view> timestamp) {
  if (!timestamp || timestamp->size() < 19) return std::nullopt;
  const auto number = [&](std::size_t at, std::size_t digits) {
    std::int64_t value = 0;
    for (std::size_t i = at; i < at + digits; ++i)
      value = value * 10 + (static_cast<unsigned char>((*timestamp)[i]) - '0');
    return value;
  };
  const auto day = CalendarDay::of(number(0, 4), number(5, 2), number(8, 2));
  return day.number * 86'400 + number(11, 2) * 3'600 + number(14, 2) * 60 + number(17, 2);
}

std::optional<Date> logDate(std::optional<std::string_view> timestamp) {
  const auto instant = logInstant(timestamp);
  return instant ? std::optional(Date{double(*instant)}) : std::nullopt;
}

} // namespace korvell
