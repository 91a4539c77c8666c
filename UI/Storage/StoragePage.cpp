#include "UI/Storage/StoragePage.h"

#include "Base/Files.h"
#include "Base/Format.h"
#include "Base/Localization.h"
#include "Core/Storage/PendingCleanup.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/SpokenFigure.h"

#include <algorithm>

namespace korvell {

namespace {

struct KindLook {
  StorageKind kind;
  Icon icon;
};
constexpr KindLook looks[] = {
    {StorageKind::derivedData, Icon::hammer},
    {StorageKind::deviceSupport, Icon::device},
    {StorageKind::archives, Icon::archive},
    {StorageKind::simulatorDevices, Icon::device},
    {StorageKind::simulatorCaches, Icon::device},
    {StorageKind::nodeModules, Icon::project},
    {StorageKind::docker, Icon::container},
    {StorageKind::appCaches, Icon::apps},
    {StorageKind::trash, Icon::trash},
    {StorageKind::downloads, Icon::download},
};

/// What has no picture of its own is a package manager's.
Icon iconOf(StorageKind kind) {
  const auto* found = std::ranges::find(looks, kind, &KindLook::kind);
  return found == std::end(looks) ? Icon::box : found->icon;
}

Token hueOf(StorageColor color) {
  switch (color) {
  case StorageColor::blue:
    return Token::cpu;
  case StorageColor::green:
    return Token::network;
  case StorageColor::orange:
    return Token::disk;
  case StorageColor::cyan:
    return Token::cyan;
  case StorageColor::purple:
    return Token::memory;
  case StorageColor::gray:
    return Token::gray;
  case StorageColor::indigo:
    return Token::indigo;
  }
  return Token::gray;
}

Tone toneOf(StorageSafety safety) {
  switch (safety) {
  case StorageSafety::safe:
    return Tone::good;
  case StorageSafety::check:
    return Tone::warning;
  case StorageSafety::keep:
    return Tone::critical;
  }
  return Tone::warning;
}

std::string sizeText(std::int64_t bytes) { return Format::bytes(double(bytes)); }

std::string joined(std::initializer_list<std::string> parts) {
  std::string all;
  for (const auto& part : parts)
    if (!part.empty()) all += (all.empty() ? "" : ", ") + part;
  return all;
}

/// "July"; with its year where the month alone would mean a later one.
std::string monthText(const TimeZone& zone, Date date, Date now) {
  const auto then = localTime(zone, date), today = localTime(zone, now);
  const auto name = monthName(then.month);
  const auto months = (today.year - then.year) * 12 + today.month - then.month;
  if (months >= 0 && months < 12) return name;
  return localized("{month} {year}", {{"month", name}, {"year", std::to_string(then.year)}});
}

std::string dateText(const StorageItem& item, const TimeZone& zone, Date now) {
  if (!item.date) return {};
  const auto* words = item.kind == StorageKind::downloads  ? "added in {month}"
                      : item.kind == StorageKind::archives ? "archived in {month}"
                                                           : "last change in {month}";
  return localized(words, {{"month", monthText(zone, *item.date, now)}});
}

std::string spokenSize(std::int64_t bytes) { return spokenFigure(Unit::bytes, double(bytes)); }

/// The state of the scanner with all that the rows are made of.
struct Found {
  const StorageScanner& scanner;
  const StorageScanResult& result;
  const StorageContext& context;
  std::int64_t largest = 0;

  bool isTicked(const StorageItem& item) const { return scanner.selection->contains(item.id); }

  StorageItemRow item(const StorageItem& item) const {
    StorageItemRow row{.id = item.id,
                       .title = item.title,
                       .detail = item.detail.value_or(""),
                       .date = dateText(item, context.zone, context.now),
                       .size = sizeText(item.bytes),
                       .path = item.urls.empty() ? "" : item.urls.front(),
                       .isTicked = isTicked(item)};
    row.spoken = joined({row.title, row.detail, row.date, spokenSize(item.bytes)});
    return row;
  }

  Ticks ticks(const StorageCategory& category) const {
    const auto ticked =
        std::ranges::count_if(category.items, [&](const StorageItem& item) { return isTicked(item); });
    if (ticked == 0) return Ticks::none;
    return ticked == std::ptrdiff_t(category.items.size()) ? Ticks::all : Ticks::some;
  }

  StorageRow row(const StorageCategory& category) const {
    const auto kind = category.kind;
    const bool hasItems = !category.items.empty();
    StorageRow row{.kind = kind,
                   .icon = iconOf(kind),
                   .hue = hueOf(color(kind)),
                   .title = title(kind),
                   .safety = label(safety(kind)),
                   .tone = toneOf(safety(kind)),
                   .explanation = explanation(kind),
                   .size = hasItems ? sizeText(category.bytes) : noFigure};
    row.level = largest > 0 ? double(category.bytes) / double(largest) : 0;
    row.ticks = ticks(category);
    row.isBusy = scanner.working->contains(kind);
    row.canTick = hasItems && !row.isBusy;
    row.unfolds = hasItems;
    row.isUnfolded = hasItems && context.unfolded.contains(kind);
    if (row.isUnfolded)
      for (const auto& each : category.items) row.items.push_back(item(each));
    if (row.isUnfolded || !hasItems) row.note = category.note.value_or("");
    row.spoken = joined({row.title, hasItems ? spokenSize(category.bytes) : "", row.safety,
                         row.isBusy ? localized("being cleaned") : "", hasItems ? "" : row.note});
    return row;
  }
};

std::vector<StorageRows> groupsOf(const Found& found) {
  std::vector<StorageRows> groups;
  for (const auto& each : EnumTable<StorageGroup>::cases) {
    StorageRows rows{.title = title(each.value)};
    std::int64_t bytes = 0;
    std::string said;
    for (const auto& category : found.result.categories) {
      if (group(category.kind) != each.value) continue;
      bytes = checkedSum(bytes, category.bytes);
      auto row = found.row(category);
      if (row.explanation == said)
        row.explanation.clear();
      else
        said = row.explanation;
      rows.rows.push_back(std::move(row));
    }
    if (rows.rows.empty()) continue;
    rows.size = sizeText(bytes);
    groups.push_back(std::move(rows));
  }
  return groups;
}

std::optional<StorageDisk> diskOf(const std::optional<VolumeInfo>& volume, std::int64_t reclaimable) {
  if (!volume || volume->total <= 0) return std::nullopt;
  const auto free = std::clamp<std::int64_t>(volume->available, 0, volume->total);
  // Not all that was measured need lie on this volume.
  const auto freed = std::clamp<std::int64_t>(reclaimable, 0, volume->total - free);
  const auto part = [](std::string name, std::int64_t bytes) {
    return StorageDisk::Part{std::move(name), sizeText(bytes), double(bytes)};
  };
  return StorageDisk{part(localized("Stays"), volume->total - free - freed),
                     part(localized("Can be freed"), freed), part(localized("Free"), free),
                     localized("{size} free if all of it goes", {{"size", sizeText(free + freed)}})};
}

/// What is ticked, without what is being cleaned already.
struct Ticked {
  std::vector<std::string> ids;
  std::int64_t bytes = 0;
  std::set<std::string> actions; ///< what their buttons would say
};

Ticked tickedOf(const StorageScanner& scanner) {
  Ticked ticked;
  if (!*scanner.result) return ticked;
  for (const auto& category : (*scanner.result)->categories) {
    if (scanner.working->contains(category.kind)) continue;
    for (const auto& item : category.items) {
      if (!scanner.selection->contains(item.id)) continue;
      ticked.ids.push_back(item.id);
      ticked.bytes = checkedSum(ticked.bytes, item.bytes);
      ticked.actions.insert(actionTitle(category));
    }
  }
  return ticked;
}

std::string tickedText(const Ticked& ticked) {
  return counted(std::int64_t(ticked.ids.size()), "1 item", "{n} items") + ", " + sizeText(ticked.bytes);
}

bool saysNothingWasDone(const std::string& words) {
  const CleanupOutcome outcomes[] = {{}, {.interrupted = true}, {.isBusy = true}};
  return std::ranges::any_of(outcomes, [&](const auto& outcome) { return feedback(outcome, {}) == words; });
}

StorageFooter footerOf(const StorageScanner& scanner, const StoragePage& page) {
  StorageFooter footer{.detail = page.freed};
  const auto ticked = tickedOf(scanner);
  const bool isFound = page.state == StoragePage::State::found;
  footer.canAct = footer.canUntick = !ticked.ids.empty();
  if (isFound) footer.action = ticked.actions.size() == 1 ? *ticked.actions.begin() : localized("Clean Up…");
  if (footer.canAct)
    footer.headline = tickedText(ticked);
  else if (!scanner.working->empty())
    footer.headline = localized("Cleaning…");
  else if (isFound)
    footer.headline = localized("Nothing is ticked.");
  if (!*scanner.feedback) return footer;
  if (footer.canAct) footer.detail = footer.headline;
  footer.headline = **scanner.feedback;
  footer.tone = saysNothingWasDone(footer.headline) ? Tone::warning : Tone::good;
  return footer;
}

} // namespace

StoragePage storagePage(const StorageScanner& scanner, const StorageContext& context) {
  using State = StoragePage::State;
  StoragePage page;
  page.canScan = !*scanner.isScanning && scanner.working->empty();
  if (*scanner.freedTotal > 0)
    page.freed = localized("Freed with Korvell: {size}", {{"size", sizeText(*scanner.freedTotal)}});
  if (*scanner.isScanning) {
    page.state = State::scanning;
    page.progress = *scanner.progress;
    page.step = *scanner.step;
    page.notice = scanner.notice->value_or("");
  } else if (const auto& result = *scanner.result) {
    page.state = result->categories.empty() ? State::empty : State::found;
    Found found{scanner, *result, context};
    for (const auto& category : result->categories) found.largest = std::max(found.largest, category.bytes);
    page.total = figureOf(sizeText(result->reclaimableBytes()));
    page.disk = diskOf(context.volume, result->reclaimableBytes());
    page.groups = groupsOf(found);
    for (auto entry = context.log.rbegin();
         entry != context.log.rend() && page.log.size() < StoragePage::mostFreed; ++entry)
      page.log.push_back({dayAndTime(context.zone, entry->date, context.now), sizeText(entry->bytes)});
  }
  page.footer = footerOf(scanner, page);
  return page;
}

std::optional<VolumeInfo> volumeOf(const std::vector<VolumeInfo>& volumes, const std::string& path) {
  const VolumeInfo* best = nullptr;
  for (const auto& volume : volumes)
    if (isInside(path, volume.url) && (!best || volume.url.size() > best->url.size())) best = &volume;
  return best ? std::optional(*best) : std::nullopt;
}

namespace {

/// Ticks what is not ticked, unless all of it is.
void toggleAll(StorageScanner& scanner, const std::vector<std::string>& ids) {
  auto ticked = *scanner.selection;
  const bool areAll = std::ranges::all_of(ids, [&](const auto& id) { return ticked.contains(id); });
  for (const auto& id : ids) {
    if (areAll)
      ticked.erase(id);
    else
      ticked.insert(id);
  }
  scanner.feedback.setIfChanged(std::nullopt);
  scanner.selection.setIfChanged(std::move(ticked));
}

/// The ids of the items that the test holds for, of categories that are not being cleaned.
template <class Test>
std::vector<std::string> idsOf(const StorageScanner& scanner, Test test) {
  std::vector<std::string> ids;
  if (!*scanner.result) return ids;
  for (const auto& category : (*scanner.result)->categories)
    for (const auto& item : category.items)
      if (!scanner.working->contains(category.kind) && test(item)) ids.push_back(item.id);
  return ids;
}

} // namespace

void toggle(StorageScanner& scanner, StorageKind kind) {
  toggleAll(scanner, idsOf(scanner, [&](const StorageItem& item) { return item.kind == kind; }));
}

void toggle(StorageScanner& scanner, const std::string& id) {
  toggleAll(scanner, idsOf(scanner, [&](const StorageItem& item) { return item.id == id; }));
}

void untickAll(StorageScanner& scanner) { toggleAll(scanner, tickedOf(scanner).ids); }

std::optional<CleanStorageRequest> cleanRequest(const StorageScanner& scanner) {
  auto ids = tickedOf(scanner).ids;
  if (ids.empty()) return std::nullopt;
  return CleanStorageRequest{std::move(ids), (*scanner.result)->date};
}

} // namespace korvell
