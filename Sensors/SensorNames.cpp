#include "Sensors/SensorNames.h"

#include "Base/Localization.h"
#include "Base/Text.h"

namespace korvell {

namespace {

constexpr int mostColumns = 48;

} // namespace

std::string sensorText(std::string_view bytes) {
  std::string text(bytes.substr(0, bytes.find('\0')));
  for (char& c : text)
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  return truncatedToWidth(escapedControls(trimmed(text)), mostColumns);
}

std::string numberedFan(int number) {
  return localized("Fan {number}", {{"number", std::to_string(number)}});
}

} // namespace korvell
