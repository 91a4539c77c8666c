#include "App/ModelParts.h"

#include <algorithm>

namespace korvell {

namespace {

Value liveValue(const AppModel& model) {
  Value live = Value::object();
  for (const auto& [metric, points] : *model.live) live.set(rawValue(metric), toValue(points));
  return live;
}

Value aiUsageValue(const AppModel& model) {
  const auto* store = model.aiUsage();
  if (!store) return {};
  auto value = summaryValue(*store->summary, store->zone());
  value.set("isScanning", *store->isScanning);
  return value;
}

constexpr ModelPart parts[] = {
    {"snapshot", [](const AppModel& model) { return toValue(*model.snapshot); }},
    {"privileged",
     [](const AppModel& model) { return *model.privileged ? toValue(**model.privileged) : Value(); }},
    {"sensors", [](const AppModel& model) { return *model.sensors ? toValue(**model.sensors) : Value(); }},
    {"peripherals", [](const AppModel& model) { return toValue(*model.peripherals); }},
    {"projects", [](const AppModel& model) { return toValue(*model.projects); }},
    {"startupItems", [](const AppModel& model) { return toValue(*model.startupItems); }},
    {"report", [](const AppModel& model) { return *model.hasSample ? reportValue(*model.report) : Value(); }},
    {"alerts", [](const AppModel& model) { return toValue(*model.alerts); }},
    {"aiUsage", aiUsageValue},
    {"totals", [](const AppModel& model) { return toValue(*model.totals); }},
    {"live", liveValue},
};

bool isWanted(const Value* wanted, std::string_view name) {
  const auto* names = wanted ? wanted->asArray() : nullptr;
  return !names || std::any_of(names->begin(), names->end(), [&](const Value& value) {
    return value.asString() && *value.asString() == name;
  });
}

} // namespace

std::span<const ModelPart> modelParts() { return parts; }

Value stateValue(const AppModel& model, const Value* wanted) {
  Value state = Value::object({{"hasSample", *model.hasSample}});
  for (const ModelPart& part : parts) {
    if (!isWanted(wanted, part.name)) continue;
    if (auto value = part.value(model); !value.isNull()) state.set(part.name, std::move(value));
  }
  return state;
}

} // namespace korvell
