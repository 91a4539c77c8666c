// The tool "storage": a scan, of which the largest items are told.

#include "Agents/ReadingTools.h"
#include "Core/Storage/StorageHost.h"

namespace korvell {

namespace {

constexpr std::int64_t usualItems = 5, mostItems = 50;

struct ItemFigures {
  std::string title;
  std::optional<std::string> detail, path;
  std::int64_t bytes = 0;
  std::optional<Date> date;

  static constexpr auto fields() {
    return std::tuple{Field{"title", &ItemFigures::title}, Field{"detail", &ItemFigures::detail},
                      Field{"path", &ItemFigures::path}, Field{"bytes", &ItemFigures::bytes, Unit::bytes},
                      Field{"date", &ItemFigures::date}};
  }
};

struct KindFigures {
  StorageKind kind = StorageKind::derivedData;
  std::string title, explanation;
  StorageSafety safety = StorageSafety::safe;
  std::int64_t bytes = 0;
  std::uint32_t itemCount = 0;
  std::vector<ItemFigures> items; ///< the largest
  std::optional<std::string> note;
  bool isMeasured = true;

  static constexpr auto fields() {
    return std::tuple{Field{"kind", &KindFigures::kind},
                      Field{"title", &KindFigures::title},
                      Field{"explanation", &KindFigures::explanation},
                      Field{"safety", &KindFigures::safety},
                      Field{"bytes", &KindFigures::bytes, Unit::bytes},
                      Field{"itemCount", &KindFigures::itemCount},
                      Field{"items", &KindFigures::items},
                      Field{"note", &KindFigures::note},
                      Field{"isMeasured", &KindFigures::isMeasured}};
  }
};

struct StorageAnswer {
  Date date;
  std::int64_t reclaimableBytes = 0;
  std::vector<KindFigures> kinds; ///< those with findings
  std::string toFree;

  static constexpr auto fields() {
    return std::tuple{Field{"date", &StorageAnswer::date},
                      Field{"reclaimableBytes", &StorageAnswer::reclaimableBytes, Unit::bytes},
                      Field{"kinds", &StorageAnswer::kinds}, Field{"toFree", &StorageAnswer::toFree}};
  }
};

KindFigures figuresOf(const StorageCategory& category, std::size_t most) {
  KindFigures figures{.kind = category.kind,
                      .title = title(category.kind),
                      .explanation = explanation(category.kind),
                      .safety = safety(category.kind),
                      .bytes = category.bytes,
                      .itemCount = std::uint32_t(category.items.size()),
                      .note = category.note,
                      .isMeasured = category.isMeasured};
  for (const auto& item : category.items) {
    if (figures.items.size() == most) break;
    const auto path = item.id.starts_with('/') ? std::optional(item.id) : std::nullopt;
    figures.items.push_back({item.title, item.detail, path, item.bytes, item.date});
  }
  return figures;
}

bool isAsked(const Value& arguments, std::string_view kind) {
  const auto* kinds = arguments.find("kinds");
  const auto* names = kinds ? kinds->asArray() : nullptr;
  return !names || names->empty() || std::ranges::find(*names, Value(kind)) != names->end();
}

Result<Value> readStorage(Readings& readings, const Value& arguments, const Cancellation& cancellation,
                          const ReadingTool::Tell& tell) {
  const auto work = makeStorageWork(readings.services().host, readings.services().clock);
  const auto most = std::size_t(integerOf(arguments, "limit", usualItems));
  std::vector<StorageKind> kinds;
  for (const auto& row : allCases<StorageKind>())
    if (isAsked(arguments, row.rawValue)) kinds.push_back(row.value);
  StorageScanResult result;
  for (std::size_t i = 0; i < kinds.size(); ++i) {
    if (cancellation.isCancelled()) return Failure{localized("The scan was cancelled.")};
    tell({double(i), double(kinds.size()), title(kinds[i])});
    if (auto category = work.measure(kinds[i], cancellation))
      result.categories.push_back(std::move(*category));
  }
  StorageAnswer answer{.date = readings.now(),
                       .reclaimableBytes = result.reclaimableBytes(),
                       .toFree = localized("A person frees it, in the application or with \"korvell storage "
                                           "clean\".")};
  for (const auto& category : result.categories) answer.kinds.push_back(figuresOf(category, most));
  return toValue(answer);
}

} // namespace

ReadingTool storageTool() {
  auto kinds = schema::list(schema::choice<StorageKind>(""), std::size(EnumTable<StorageKind>::cases));
  return {
      .name = "storage",
      .title = "Storage that can be freed",
      .description =
          "Scans the disk for caches, old downloads and the Trash: what could be given back, by kind, with "
          "the largest items of each. Takes seconds to minutes; \"kinds\" makes it shorter. Removes nothing.",
      .input = schema::object({{"kinds", std::move(kinds.set("description", "Only these (all)"))},
                               {"limit", schema::integer("How many items of each kind (5)", 1, mostItems)}}),
      .output = schema::of<StorageAnswer>(),
      .isSlow = true,
      .readTelling = readStorage};
}

} // namespace korvell
