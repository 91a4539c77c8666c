#include "Widget/WidgetPage.h"

#include "Base/Format.h"
#include "Base/Localization.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace korvell {

namespace {

struct Measure {
  std::string_view page;
  const char* title;
  Token line;
};
constexpr std::array<Measure, 4> measures{{{"cpu", "CPU", Token::cpu},
                                           {"memory", "Memory", Token::memory},
                                           {"disk", "Disk", Token::disk},
                                           {"network", "Network", Token::network}}};

/// The document comes from a file: what it names goes into an address only as a plain word.
std::string linkTo(std::string_view page) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const bool isWord = !page.empty() && std::ranges::all_of(page, isLetter);
  return "korvell://page/" + (isWord ? std::string(page) : "overview");
}

/// A chart without a scale of its own has some air above its highest point.
double scaleOf(const WidgetSnapshot::Tile& tile) {
  constexpr double air = 1.1;
  if (tile.maxValue && *tile.maxValue > 0) return *tile.maxValue;
  const auto highest = std::ranges::max_element(tile.points);
  return highest == tile.points.end() || *highest <= 0 ? 1 : *highest * air;
}

WidgetPage::Tile shownTile(const Measure& measure, const WidgetSnapshot::Tile& tile) {
  const auto [lead, figure] = ledFigure(tile.value);
  const auto title = localized(measure.title);
  return {.title = title,
          .lead = lead,
          .figure = figure,
          .detail = tile.detail,
          .line = measure.line,
          .points = tile.points,
          .top = scaleOf(tile),
          .link = linkTo(tile.page),
          .spoken = title + ", " + tile.value + (tile.detail.empty() ? "" : ", " + tile.detail)};
}

std::vector<WidgetPage::Tile> shownTiles(const std::vector<WidgetSnapshot::Tile>& tiles) {
  std::vector<WidgetPage::Tile> shown;
  for (const auto& tile : tiles) {
    const auto measure = std::ranges::find(measures, tile.page, &Measure::page);
    if (measure != measures.end() && shown.size() < measures.size())
      shown.push_back(shownTile(*measure, tile));
  }
  return shown;
}

WidgetPage waitingPage() {
  WidgetPage page{.label = localized("Measuring…"), .spoken = localized("Measuring…")};
  for (const auto& measure : measures)
    page.tiles.push_back(shownTile(measure, {.page = std::string(measure.page), .value = noFigure}));
  return page;
}

WidgetPage shownPage(const WidgetSnapshot& document) {
  WidgetPage page{.state = WidgetPage::State::shown,
                  .score = document.score,
                  .label = document.label,
                  .spoken = localized("Health {score} of 100, {label}.",
                                      {{"score", std::to_string(document.score)}, {"label", document.label}}),
                  .tiles = shownTiles(document.tiles)};
  for (const auto& fix : document.fixes)
    page.fixes.push_back({fix.title, fix.detail, fix.critical, linkTo(fix.page)});
  for (const auto& app : document.apps)
    page.apps.push_back({app.name, app.bundlePath.value_or(app.name), app.memory, app.fraction});
  return page;
}

} // namespace

bool isOld(const WidgetSnapshot& document, Date now) {
  return std::abs((now - document.date).count()) >= widgetPatience.count();
}

WidgetPage widgetPage(const std::optional<WidgetSnapshot>& document, const WidgetMoment& moment) {
  auto page = document ? shownPage(*document) : waitingPage();
  const bool isLate = !document || isOld(*document, moment.now);
  if (document && isLate)
    page.asOf = localized("As of {time}", {{"time", clockText(moment.zone, document->date)}});
  if (isLate && !moment.isMeasured) page.state = WidgetPage::State::stopped;
  page.overviewLink = linkTo("overview");
  page.memoryLink = linkTo("memory");
  return page;
}

LedFigure ledFigure(std::string_view text) {
  LedFigure result;
  for (const std::string_view arrow : {"↓ ", "↑ "})
    if (text.starts_with(arrow)) {
      result.lead = text.substr(0, arrow.size() - 1);
      text.remove_prefix(arrow.size());
    }
  if (text.ends_with('%')) {
    text.remove_suffix(1);
    if (const auto gap = currentLanguage().numbers.beforePercent; text.ends_with(gap))
      text.remove_suffix(gap.size());
    result.figure = {std::string(text), "%"};
  } else {
    const auto gap = text.rfind(' ');
    result.figure.number = text.substr(0, gap);
    if (gap != std::string_view::npos) result.figure.unit = text.substr(gap + 1);
  }
  return result;
}

} // namespace korvell
