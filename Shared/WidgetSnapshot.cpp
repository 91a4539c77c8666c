#include "Shared/WidgetSnapshot.h"

#include "Base/Files.h"
#include "Base/Localization.h"

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

/// The texts of a list's records, each under its name.
template <class T>
struct Texts {
  std::string_view list;
  std::vector<T> WidgetSnapshot::*records;
  std::vector<std::pair<std::string_view, std::string T::*>> members;
};

/// Calls with each of them.
template <class Use>
void eachTexts(Use use) {
  use(Texts<WidgetSnapshot::Fix>{
      "fixes",
      &WidgetSnapshot::fixes,
      {{"title", &WidgetSnapshot::Fix::title}, {"detail", &WidgetSnapshot::Fix::detail}}});
  use(Texts<WidgetSnapshot::Tile>{
      "tiles",
      &WidgetSnapshot::tiles,
      {{"value", &WidgetSnapshot::Tile::value}, {"detail", &WidgetSnapshot::Tile::detail}}});
  use(Texts<WidgetSnapshot::TopApp>{
      "apps", &WidgetSnapshot::apps, {{"memory", &WidgetSnapshot::TopApp::memory}}});
}

Value textsOf(const WidgetSnapshot& snapshot) {
  Value texts = Value::object({{"label", snapshot.label}});
  eachTexts([&](const auto& row) {
    auto list = Value::array();
    for (const auto& record : snapshot.*row.records) {
      auto value = Value::object();
      for (const auto& [name, member] : row.members) value.set(name, record.*member);
      list.append(std::move(value));
    }
    texts.set(row.list, std::move(list));
  });
  return texts;
}

/// A list of another length says something else, and is left out.
void speak(const Value& texts, WidgetSnapshot& snapshot) {
  const auto takeText = [](const Value& from, std::string_view name, std::string& into) {
    const auto* text = from.find(name);
    if (text && text->asString()) into = *text->asString();
  };
  takeText(texts, "label", snapshot.label);
  eachTexts([&](const auto& row) {
    const auto* list = texts.find(row.list);
    auto& records = snapshot.*row.records;
    if (!list || !list->asArray() || list->asArray()->size() != records.size()) return;
    for (std::size_t i = 0; i < records.size(); ++i)
      for (const auto& [name, member] : row.members)
        takeText((*list->asArray())[i], name, records[i].*member);
  });
}

} // namespace

Value WidgetSnapshot::value() const {
  auto value = Value::object({{"date", (date - referenceDate).count()},
                              {"score", score},
                              {"label", label},
                              {"fixes", toValue(fixes)},
                              {"tiles", toValue(tiles)},
                              {"apps", toValue(apps)}});
  if (others.empty()) return value;
  auto in = Value::object();
  for (const auto& [code, snapshot] : others) in.set(code, textsOf(snapshot));
  return value.set("in", std::move(in));
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
  const auto* others = document->find("in");
  if (const auto* texts = others ? others->find(currentLanguage().code) : nullptr) speak(*texts, snapshot);
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
