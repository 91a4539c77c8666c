#include "Base/Markup.h"

namespace korvell {

std::string escapedMarkup(std::string_view text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
    case '&':
      result += "&amp;";
      break;
    case '<':
      result += "&lt;";
      break;
    case '>':
      result += "&gt;";
      break;
    default:
      result += c;
    }
  }
  return result;
}

} // namespace korvell
