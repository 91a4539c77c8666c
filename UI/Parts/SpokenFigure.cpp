#include "UI/Parts/SpokenFigure.h"

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

std::string spoken(const std::string& shown, bool isOfCore) {
  for (const auto& [ending, words] : endings) {
    if (!shown.ends_with(ending)) continue;
    auto number = shown.substr(0, shown.size() - ending.size());
    const auto gap = currentLanguage().numbers.beforePercent;
    if (number.ends_with(gap)) number.resize(number.size() - gap.size());
    return localized(isOfCore ? "{n} percent of one core" : words, {{"n", number}});
  }
  return shown;
}

} // namespace

std::string spokenFigure(Unit unit, double value) {
  return spoken(Format::figure(unit, value), unit == Unit::corePercent);
}

std::string spokenFigure(const Figure& figure) { return spoken(textOf(figure), false); }

} // namespace korvell
