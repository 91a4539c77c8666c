#include "Sensors/NaturalOrder.h"

#include <cstddef>

namespace korvell {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
char lower(char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; }

/// Takes the digits at the beginning, without the zeros before them.
std::string_view takeNumber(std::string_view& text) {
  std::size_t end = 0;
  while (end < text.size() && isDigit(text[end])) ++end;
  auto number = text.substr(0, end);
  text.remove_prefix(end);
  while (number.size() > 1 && number.front() == '0') number.remove_prefix(1);
  return number;
}

/// Below, at or above 0 as std::string_view::compare.
int compare(std::string_view a, std::string_view b) {
  while (!a.empty() && !b.empty()) {
    if (isDigit(a.front()) && isDigit(b.front())) {
      const auto first = takeNumber(a), second = takeNumber(b);
      if (first.size() != second.size()) return first.size() < second.size() ? -1 : 1;
      if (const int order = first.compare(second)) return order;
      continue;
    }
    const auto first = static_cast<unsigned char>(lower(a.front()));
    const auto second = static_cast<unsigned char>(lower(b.front()));
    if (first != second) return first < second ? -1 : 1;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
  return int(!a.empty()) - int(!b.empty());
}

} // namespace

bool comesNaturallyBefore(std::string_view a, std::string_view b) {
  const int order = compare(a, b);
  return order != 0 ? order < 0 : a < b;
}

} // namespace korvell
