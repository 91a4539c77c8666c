#include "Agents/MetricsReading.h"

#include "Core/AIUsage/AIUsageStore.h"
#include "Core/Storage/StorageLog.h"

namespace korvell {

namespace {

template <class T>
std::optional<T> part(const Value& state, const char* name) {
  const auto* told = state.find(name);
  T read{};
  return told && fromValue(*told, read) ? std::optional(std::move(read)) : std::nullopt;
}

std::optional<AIUsageRow> usageRow(const Value& value, const TimeZone& zone) {
  const auto text = [&](const char* name) -> std::string {
    const auto* member = value.find(name);
    return member && member->asString() ? *member->asString() : "";
  };
  const auto tool = fromRawValue<AITool>(text("tool"));
  const auto day = parseDay(text("day"));
  const auto* tokens = value.find("tokens");
  AIUsageRow row;
  if (!tool || !day || !tokens || !fromValue(*tokens, row.tokens)) return std::nullopt;
  row.tool = *tool;
  row.day = startOfDay(zone, *day);
  row.model = text("model");
  const auto* cost = value.find("cost");
  row.cost = cost ? cost->asDouble() : std::nullopt;
  return row;
}

std::optional<std::vector<AIUsageRow>> usageRows(const Value& state, const TimeZone& zone) {
  const auto* usage = state.find("aiUsage");
  const auto* rows = usage ? usage->find("rows") : nullptr;
  if (!rows || !rows->asArray()) return std::nullopt;
  std::vector<AIUsageRow> read;
  for (const auto& row : *rows->asArray())
    if (auto one = usageRow(row, zone)) read.push_back(std::move(*one));
  return read;
}

} // namespace

void addKept(MetricsReading& reading, const UserDefaults& defaults) {
  reading.freed = StorageLog::total(defaults);
  reading.reclaimable = StorageFound::all(defaults);
}

std::optional<MetricsReading> metricsReading(const Value& state, const TimeZone& zone, Date now) {
  auto snapshot = part<SystemSnapshot>(state, "snapshot");
  auto known = part<KnownParts>(state, "known");
  auto report = part<HealthReport>(state, "report");
  if (!snapshot || !known || !report) return std::nullopt;
  return MetricsReading{.now = now,
                        .snapshot = std::move(*snapshot),
                        .known = *known,
                        .report = std::move(*report),
                        .privileged = part<PrivilegedUse>(state, "privileged"),
                        .sensors = part<SensorsSnapshot>(state, "sensors"),
                        .peripherals = part<std::vector<PeripheralBattery>>(state, "peripherals"),
                        .projects = part<std::vector<DevProject>>(state, "projects"),
                        .alerts = part<std::vector<HealthAlert>>(state, "alerts"),
                        .aiUsage = usageRows(state, zone),
                        .today = startOfDay(zone, localDay(zone, now)),
                        .isRecording = state.find("historyProblem") == nullptr};
}

MetricsReading metricsReading(const AppModel& model, Date now) {
  MetricsReading reading{.now = now,
                         .snapshot = *model.snapshot,
                         .known = *model.known,
                         .report = *model.report,
                         .privileged = *model.privileged,
                         .sensors = *model.sensors,
                         .peripherals = *model.peripherals,
                         .projects = *model.projects,
                         .alerts = *model.alerts,
                         .isRecording = !model.historyProblem->has_value()};
  if (const auto* store = model.aiUsage()) {
    reading.aiUsage = store->summary->rows;
    reading.today = startOfDay(store->zone(), localDay(store->zone(), now));
  }
  return reading;
}

} // namespace korvell
