#include "UI/Measures/SpokenFigure.h"

#include "Base/Format.h"
#include "Base/Localization.h"

#include <string_view>
#include <utility>

namespace korvell {

namespace {

constexpr std::pair<std::string_view, const char*> endings[] = {{" B/s", "{n} bytes a second"},
                                                                {" KB/s", "{n} kilobytes a second"},
                                                                {" MB/s", "{n} megabytes a second"},
                                                                {" GB/s", "{n} gigabytes a second"},
                                                                {" B", "{n} bytes"},
                                                                {" KB", "{n} kilobytes"},
                                                                {" MB", "{n} megabytes"},
                                                                {" GB", "{n} gigabytes"},
                                                                {" TB", "{n} terabytes"},
                                                                {" W", "{n} watts"},
                                                                {"°C", "{n} degrees"},
                                                                {"%", "{n} percent"}};

} // namespace

std::string spokenFigure(Unit unit, double value) {
  const auto shown = Format::figure(unit, value);
  if (unit == Unit::corePercent && shown.ends_with('%'))
    return localized("{n} percent of one core", {{"n", shown.substr(0, shown.size() - 1)}});
  for (const auto& [ending, words] : endings)
    if (shown.ends_with(ending))
      return localized(words, {{"n", shown.substr(0, shown.size() - ending.size())}});
  return shown;
}

} // namespace korvell
