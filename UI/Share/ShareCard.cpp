#include "UI/Share/ShareCard.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/HealthParts.h"
#include "UI/Parts/Tiles.h"

#include <algorithm>
#include <cctype>

namespace korvell {

namespace {

bool isWordAt(const std::string& text, std::size_t at, std::size_t length) {
  const auto isLetter = [&](std::size_t i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    return std::isalnum(byte) || byte >= 0x80;
  };
  return (at == 0 || !isLetter(at - 1)) && (at + length == text.size() || !isLetter(at + length));
}

struct Stand {
  std::string first, inside; ///< at the beginning of a sentence, and elsewhere
};

void replaceWord(std::string& text, const std::string& name, const Stand& by) {
  if (name.empty()) return;
  auto at = text.find(name);
  while (at != std::string::npos) {
    const auto& word = at == 0 ? by.first : by.inside;
    const bool isWord = isWordAt(text, at, name.size());
    if (isWord) text.replace(at, name.size(), word);
    at = text.find(name, at + (isWord ? word.size() : 1));
  }
}

/// A title without the names that only its owner would know.
std::string withoutNames(const Insight& insight, const SystemSnapshot& snapshot) {
  const auto volumeFirst = [&](const std::string& volume) {
    return insight.title == localized("{volume} is almost full", {{"volume", volume}});
  };
  auto title = insight.title;
  if (insight.action && insight.action->name)
    replaceWord(title, *insight.action->name, {localized("An app"), localized("an app")});
  for (const auto& volume : snapshot.disk.volumes) {
    if (volumeFirst(volume.name)) return localized("The disk is almost full");
    // What is also a word of ours is told apart by the sentence above alone.
    if (title.find(volume.name + " ") != 0)
      replaceWord(title, volume.name, {localized("The disk"), localized("the disk")});
  }
  return title;
}

std::string dateWords(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  return localized("{day} {month} {year}", {{"day", std::to_string(time.day)},
                                            {"month", monthName(time.month)},
                                            {"year", std::to_string(time.year)}});
}

std::optional<ShareCard::Tile> freeSpace(const Model& model) {
  const auto& volumes = model.snapshot->disk.volumes;
  if (!model.known->has(KnownPart::volumes) || volumes.empty() || volumes.front().total == 0)
    return std::nullopt;
  const auto& volume = volumes.front();
  return ShareCard::Tile{.title = localized("Disk free"),
                         .figure = figureOf(Format::bytes(double(volume.available))),
                         .line = Token::disk,
                         .level = 1 - double(volume.available) / double(volume.total)};
}

/// Those that most people know first.
std::vector<ShareCard::Tile> tilesOf(const Model& model) {
  std::vector<ShareCard::Tile> known, others;
  for (const auto& tile : measureTiles(model)) {
    if (tile.section == SidebarItem::disk) {
      if (auto space = freeSpace(model)) known.push_back(*space);
      continue;
    }
    if (tile.figure.number == noFigure) continue;
    ShareCard::Tile shown{.title = tile.title,
                          .figure = tile.figure,
                          .line = tile.line,
                          .values = tile.values,
                          .top = tile.top,
                          .level = {}};
    const auto used = model.snapshot->memory.usedShare();
    if (tile.section == SidebarItem::memory && used) shown.figure = figureOf(Unit::percent, *used);
    const bool isUsual = tile.section == SidebarItem::cpu || tile.section == SidebarItem::memory ||
                         tile.section == SidebarItem::energy;
    (isUsual ? known : others).push_back(std::move(shown));
  }
  known.insert(known.end(), others.begin(), others.end());
  if (known.size() > ShareCard::mostFigures) known.resize(ShareCard::mostFigures);
  return known;
}

} // namespace

std::optional<ShareCard> shareCard(const Model& model, const TimeZone& zone) {
  const auto head = healthHead(model, std::nullopt, false);
  if (!head.score) return std::nullopt;
  const auto now = model.snapshot->date;
  ShareCard card{.score = *head.score,
                 .label = head.label,
                 .title = localized("My Mac’s health"),
                 .loss = head.loss,
                 .lost = {},
                 .findings = {},
                 .more = {},
                 .reassurance = {},
                 .tiles = tilesOf(model),
                 .date = dateWords(zone, now),
                 .fileName = localized("Korvell health {date}", {{"date", dayText(localDay(zone, now))}})};
  const auto& insights = model.report->insights;
  const bool isCut = insights.size() > ShareCard::mostFindings;
  for (const auto& insight : insights) {
    const auto tone = toneOf(insight.severity);
    card.lost.push_back({double(insight.penalty), tone});
    if (card.findings.size() < ShareCard::mostFindings)
      card.findings.push_back({tone, insight.penalty, withoutNames(insight, *model.snapshot)});
  }
  if (isCut)
    card.more = localized("{n} more", {{"n", std::to_string(insights.size() - ShareCard::mostFindings)}});
  if (insights.empty()) card.reassurance = localized("Everything that was measured is within its limits.");
  return card;
}

} // namespace korvell
