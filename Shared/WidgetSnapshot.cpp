#include "Shared/WidgetSnapshot.h"

#include "Base/Files.h"

namespace korvell {

namespace {

/// 2001-01-01 00:00 UTC.
constexpr Date referenceDate{978'307'200};

/// Every field that is no optional is there and of its type.
template <class T>
bool readWhole(const Value& value, T& record);

template <class T>
bool readWhole(const Value* member, std::vector<T>& records) {
  const auto* elements = member ? member->asArray() : nullptr;
  if (!elements) return false;
  for (const auto& element : *elements)
    if (!readWhole(element, records.emplace_back())) return false;
  return true;
}

template <class T>
bool readWhole(const Value& value, T& record) {
  const auto isThere = [&](const auto& field) {
    const auto* member = value.find(field.name);
    return member ? !member->isNull() : detail::Optional<std::decay_t<decltype(record.*field.member)>>;
  };
  return std::apply([&](const auto&... field) { return (isThere(field) && ...); }, T::fields()) &&
         fromValue(value, record);
}

template <class T>
bool take(const Value& document, std::string_view name, T& result) {
  const auto* member = document.find(name);
  return member && fromValue(*member, result);
}

} // namespace

Value WidgetSnapshot::value() const {
  return Value::object({{"date", (date - referenceDate).count()},
                        {"score", score},
                        {"label", label},
                        {"fixes", toValue(fixes)},
                        {"tiles", toValue(tiles)},
                        {"apps", toValue(apps)}});
}

std::string WidgetSnapshot::encoded() const { return dumpJSON(value()) + "\n"; }

std::optional<WidgetSnapshot> WidgetSnapshot::decoded(std::string_view text) {
  const auto document = parseJSON(text);
  if (!document || !document->asObject()) return std::nullopt;
  WidgetSnapshot snapshot;
  double date = 0;
  if (!take(*document, "date", date) || !take(*document, "score", snapshot.score) ||
      !take(*document, "label", snapshot.label) || !readWhole(document->find("fixes"), snapshot.fixes) ||
      !readWhole(document->find("tiles"), snapshot.tiles) ||
      !readWhole(document->find("apps"), snapshot.apps))
    return std::nullopt;
  if (snapshot.score < 0 || snapshot.score > 100) return std::nullopt;
  for (const auto& app : snapshot.apps)
    if (app.fraction < 0 || app.fraction > 1) return std::nullopt;
  snapshot.date = referenceDate + Seconds(date);
  return snapshot;
}

namespace WidgetShared {

std::string snapshotURL(const UserFolders& folders) { return folders.data + "/Widget/widget.json"; }

std::string sandboxedSnapshotURL(const std::optional<std::string>& passwordHome, const UserFolders& folders) {
  return passwordHome.value_or(folders.home) + "/Library/Application Support/Korvell/Widget/widget.json";
}

std::optional<WidgetSnapshot> read(const std::string& path) {
  const auto text = readFile(path, mostBytes);
  return text ? WidgetSnapshot::decoded(*text) : std::nullopt;
}

} // namespace WidgetShared

} // namespace korvell
