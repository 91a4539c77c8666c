// korvell storage: what could be given back, and what was.

#include "Tool/StorageCommand.h"

#include "App/JSONDocuments.h"
#include "Base/Files.h"
#include "Base/Format.h"
#include "Base/LocalTime.h"
#include "Base/Text.h"
#include "Core/Storage/StorageLog.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Progress.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {

Option storageKindOption(std::string help, bool required) {
  return {"--kind", Option::Kind::list, std::move(help), choicesOf<StorageKind>(), required};
}

std::vector<StorageKind> storageKinds(const Arguments& arguments) {
  const auto asked = arguments.list("--kind");
  std::vector<StorageKind> kinds;
  for (const auto& row : allCases<StorageKind>())
    if (asked.empty() || std::ranges::find(asked, row.rawValue) != asked.end()) kinds.push_back(row.value);
  return kinds;
}

std::optional<StorageScanResult> measureStorage(Context& context, CommandActions& actions,
                                                const std::vector<StorageKind>& kinds) {
  auto& scanner = actions.storage();
  Progress progress(context.err, context.clock);
  const auto steps = scanner.progress.observe([&](double done) {
    if (!scanner.step->empty()) progress.show(done, *scanner.step);
  });
  const auto answer = actions.perform(ScanStorageRequest{kinds}, [&scanner] { scanner.cancel(); });
  progress.clear();
  if (answer.worked) return *scanner.result;
  fail(context, localized("Interrupted. Nothing was done."));
  return std::nullopt;
}

std::string shownItem(const std::string& id, const std::string& home) {
  return escapedControls(tildePath(id, home));
}

namespace {

std::string sizeText(std::int64_t bytes) { return Format::bytes(double(bytes)); }

Ink ink(StorageSafety safety) {
  return safety == StorageSafety::safe    ? Ink::good
         : safety == StorageSafety::check ? Ink::warning
                                          : Ink::critical;
}

void printWrapped(Terminal& out, std::string_view text) {
  for (const auto& line : wrapped(escapedControls(text), std::min(out.columns(), widestSummary)))
    out.line(out.ink(Ink::dim, line));
}

void printNothing(Terminal& out) {
  out.line(localized("Nothing to clean"));
  out.line(localized("No build caches, package caches or old downloads worth removing."));
}

/// One row a kind, under its group; groups without findings are left out.
void printCategories(Terminal& out, const StorageScanResult& result) {
  Table table({{localized("Storage"), Column::Align::left, true, 20},
               {localized("Size"), Column::Align::right},
               {localized("Items"), Column::Align::right},
               {localized("Kind")},
               {localized("Safety"), Column::Align::left, true, 10}});
  for (const auto& row : allCases<StorageGroup>()) {
    bool first = true;
    for (const auto& category : result.categories) {
      if (group(category.kind) != row.value) continue;
      if (std::exchange(first, false)) table.row({{title(row.value), Ink::bold}, "", "", "", ""});
      const auto rating = safety(category.kind);
      table.row({"  " + title(category.kind),
                 sizeText(category.bytes),
                 std::to_string(category.items.size()),
                 {std::string(rawValue(category.kind)), Ink::dim},
                 {label(rating), ink(rating)}});
    }
  }
  table.print(out);
  out.line();
  for (const auto& category : result.categories)
    if (category.note) printWrapped(out, title(category.kind) + ": " + *category.note);
  out.line(localized("{size} can be freed.", {{"size", sizeText(result.reclaimableBytes())}}));
}

/// Every item on a line of its own that is never cut: its id is what `clean --item` takes.
void printItems(Terminal& out, const StorageScanResult& result, const std::string& home,
                const TimeZone& zone) {
  constexpr std::size_t sizeWidth = 8;
  for (const auto& category : result.categories) {
    const auto rating = safety(category.kind);
    if (&category != &result.categories.front()) out.line();
    out.line(out.ink(Ink::bold, title(category.kind)) + "  " + sizeText(category.bytes) + "  " +
             out.ink(ink(rating), label(rating)));
    printWrapped(out, explanation(category.kind));
    for (const auto& item : category.items) {
      auto size = sizeText(item.bytes);
      size.insert(0, sizeWidth - std::min(sizeWidth, size.size()), ' ');
      const auto name = shownItem(item.id, home);
      const auto detail = item.id.starts_with('/') ? "" : "  " + item.title + "  " + item.detail.value_or("");
      const auto date = item.date ? "  " + shownDay(localDay(zone, *item.date)) : "";
      out.line("  " + size + "  " + name + out.ink(Ink::dim, detail + date));
    }
    if (category.note) printWrapped(out, *category.note);
  }
}

int runStorage(Context& context, const Arguments& arguments) {
  CommandActions actions(context, CommandActions::Where::here);
  const auto measured = measureStorage(context, actions, storageKinds(arguments));
  if (!measured) return exitFailed;
  const auto& result = *measured;
  if (arguments.flag("--json"))
    printJSON(context.out, toValue(result));
  else if (result.categories.empty())
    printNothing(context.out);
  else if (arguments.flag("--items"))
    printItems(context.out, result, actions.storage().work()->home(), *context.host.zone);
  else
    printCategories(context.out, result);
  return exitOK;
}

int runLog(Context& context, const Arguments& arguments) {
  const auto total = StorageLog::total(*context.host.defaults);
  const auto entries = StorageLog::entries(*context.host.defaults);
  if (arguments.flag("--json")) {
    printJSON(context.out, storageLogValue(*context.host.defaults));
    return exitOK;
  }
  const auto& zone = *context.host.zone;
  Table table({{localized("Day")}, {localized("Freed"), Column::Align::right}});
  for (const auto& entry : entries) table.row({shownDay(localDay(zone, entry.date)), sizeText(entry.bytes)});
  if (!table.empty()) {
    table.print(context.out);
    context.out.line();
  }
  context.out.line(localized("Freed with Korvell: {size}", {{"size", sizeText(total)}}));
  return exitOK;
}

} // namespace

Command storageCommand() {
  return {"storage",
          "Show what could be freed on the disk, and free it",
          {storageKindOption("Measure only this kind", false),
           {"--items", Option::Kind::flag, "List the items of each kind"},
           jsonOption()},
          runStorage,
          {writing({"clean",
                    "Free the space of whole kinds or of single items",
                    {storageKindOption("The kind to clean", true),
                     {"--item", Option::Kind::list,
                      "Only this item: the path or the name that `storage --items` shows"},
                     {"--dry-run", Option::Kind::flag, "Show what would happen and change nothing"},
                     yesOption(),
                     jsonOption()},
                    runStorageClean}),
           {"log", "Show what was freed so far", {jsonOption()}, runLog}}};
}

} // namespace korvell
