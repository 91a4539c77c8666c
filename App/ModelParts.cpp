#include "App/ModelParts.h"

#include <algorithm>
#include <array>

namespace korvell {

namespace {

struct Part {
  std::string_view name;
  Value (*value)(const AppModel&); ///< null when there is nothing to tell
  std::uint64_t (*version)(const AppModel&);
  void (*read)(const Value&, Model&, Publication&); ///< null: nothing of a model's
  bool isOnlyNamed = false;                         ///< told to nobody who does not name it
};

Value aiUsageValue(const AppModel& model) {
  const auto* store = model.aiUsage();
  if (!store) return {};
  auto value = summaryValue(*store->summary, store->zone());
  value.set("isScanning", *store->isScanning);
  return value;
}

std::uint64_t aiUsageVersion(const AppModel& model) {
  const auto* store = model.aiUsage();
  return store ? store->summary.version() + store->isScanning.version() : 0;
}

Value liveValue(const AppModel& model) {
  Value live = Value::object();
  for (const auto& [metric, points] : *model.live) live.set(rawValue(metric), toValue(points));
  return live;
}

void readLive(const Value& value, Model& model, Publication& publication) {
  LiveSeries series;
  for (const auto& metric : allCases<Metric>())
    if (const auto* points = value.find(metric.rawValue))
      if (!fromValue(*points, series[metric.value])) return;
  publication.set(model.live, std::move(series));
}

template <class T>
Value memberValue(const T& member) {
  return toValue(member);
}

template <class T>
Value memberValue(const std::optional<T>& member) {
  return member ? toValue(*member) : Value();
}

template <auto Member>
constexpr Part part(std::string_view name) {
  return {name, [](const AppModel& model) { return memberValue((model.*Member).get()); },
          [](const AppModel& model) { return (model.*Member).version(); },
          [](const Value& value, Model& model, Publication& publication) {
            // From nothing: an optional that is not told any more is absent.
            std::remove_cvref_t<decltype((model.*Member).get())> read{};
            if (fromValue(value, read)) publication.set(model.*Member, std::move(read));
          }};
}

constexpr Part reportPart() {
  auto row = part<&Model::report>("report");
  row.value = [](const AppModel& model) { return *model.hasSample ? toldValue(*model.report) : Value(); };
  return row;
}

constexpr Part alertsPart() {
  auto row = part<&Model::alerts>("alerts");
  row.value = [](const AppModel& model) { return toldValue(*model.alerts); };
  return row;
}

/// The snapshot without its applications: a hundredth of it, for who shows the machine alone.
constexpr Part machinePart() {
  auto row = part<&Model::snapshot>("machine");
  row.isOnlyNamed = true;
  row.value = [](const AppModel& model) {
    const auto& all = *model.snapshot;
    return toValue(
        SystemSnapshot{all.date, all.cpu, all.memory, all.disk, all.network, all.gpu, all.battery});
  };
  return row;
}

constexpr std::string_view liveName = "live";

// In the order in which they are printed.
constexpr std::array parts = {
    part<&Model::snapshot>("snapshot"),
    machinePart(),
    part<&Model::known>("known"),
    part<&Model::privileged>("privileged"),
    part<&Model::sensors>("sensors"),
    part<&Model::peripherals>("peripherals"),
    part<&Model::projects>("projects"),
    part<&Model::startupItems>("startupItems"),
    reportPart(),
    alertsPart(),
    Part{"aiUsage", aiUsageValue, aiUsageVersion, nullptr},
    part<&Model::historyProblem>("historyProblem"),
    part<&Model::totals>("totals"),
    Part{liveName, liveValue, [](const AppModel& model) { return model.live.version(); }, readLive},
};

} // namespace

PartSelection PartSelection::of(const Value& request) {
  const auto* named = request.find("parts");
  const auto* names = named ? named->asArray() : nullptr;
  PartSelection selection;
  for (const Part& part : parts)
    selection.wanted_.push_back(
        names
            ? std::ranges::any_of(
                  *names, [&](const Value& name) { return name.asString() && *name.asString() == part.name; })
            : !part.isOnlyNamed);
  return selection;
}

Value PartSelection::state(const AppModel& model) const {
  Value state = Value::object({{"hasSample", *model.hasSample}});
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (auto value = wanted_[i] ? parts[i].value(model) : Value(); !value.isNull())
      state.set(parts[i].name, std::move(value));
  return state;
}

Value PartSelection::changes(const AppModel& model, ToldVersions& told) const {
  told.resize(parts.size());
  PartSelection fresh;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const auto version = parts[i].version(model);
    fresh.wanted_.push_back(wanted_[i] && version != std::exchange(told[i], version) &&
                            parts[i].name != liveName);
  }
  auto state = fresh.state(model);
  // What there was and is no more is told too: that the history is recorded again.
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (fresh.wanted_[i] && !state.find(parts[i].name)) state.set(parts[i].name, Value());
  return state;
}

void readState(const Value& state, Model& model, Publication& publication) {
  for (const Part& part : parts)
    if (const auto* value = state.find(part.name); value && part.read) part.read(*value, model, publication);
  if (const auto* has = state.find("hasSample"))
    publication.setIfChanged(model.hasSample, has->asBool().value_or(false));
}

} // namespace korvell
