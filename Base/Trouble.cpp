#include "Base/Trouble.h"

namespace korvell {

Trouble troubleOf(std::string_view key, std::initializer_list<LocalizedValue> values,
                  std::string_view cause) {
  Trouble trouble{localized(key, values), std::string(key)};
  if (!cause.empty()) trouble.nameless += " [" + std::string(cause) + "]";
  return trouble;
}

Trouble joined(Trouble first, const Trouble& second) {
  first.text += " " + second.text;
  first.nameless += " " + second.nameless;
  return first;
}

} // namespace korvell
