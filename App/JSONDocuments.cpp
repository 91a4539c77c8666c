#include "App/JSONDocuments.h"

#include "Core/Health/AlertPosting.h"
#include "Core/Storage/StorageLog.h"

namespace korvell {

// The machine

namespace {

std::string withoutAverage(bool fromKeeper) {
  return fromKeeper ? localized("Fewer than eight of the last ten minutes have been recorded.")
                    : localized("Only a running Korvell records.");
}

/// The parts, those that are not known with the reason that `doctor` gives.
Value knownValue(const KnownParts& known, bool fromKeeper, const std::vector<SourceReport>& sources) {
  Value value = toValue(known);
  if (sources.empty()) return value;
  for (const auto& part : allCases<KnownPart>()) {
    if (known.has(part.value)) continue;
    const auto reason = part.value == KnownPart::tenMinuteAverage ? withoutAverage(fromKeeper)
                                                                  : reasonFor(part.value, sources);
    if (reason.empty()) continue;
    value.set(part.rawValue, Value::object({{"state", rawValue(known[part.value])}, {"reason", reason}}));
  }
  return value;
}

/// The record and the sums that the table shows.
Value appValue(const AppUsage& app) {
  auto value = toValue(app);
  value.set("cpu", app.cpu()).set("memory", app.memory());
  value.set("diskRead", app.diskRead()).set("diskWrite", app.diskWrite());
  value.set("netIn", app.netIn()).set("netOut", app.netOut()).set("power", app.power());
  return value;
}

} // namespace

Value statusValue(const Measurement& status, const std::vector<SourceReport>& sources) {
  Value value = reportValue(status.report);
  value.set("keeper", status.fromKeeper);
  value.set("snapshot", toValue(status.snapshot));
  value.set("known", knownValue(status.known, status.fromKeeper, sources));
  if (status.sensors)
    value.set("cpuCelsius", status.sensors->cpuCelsius).set("gpuCelsius", status.sensors->gpuCelsius);
  if (status.privileged) value.set("privileged", toValue(*status.privileged));
  if (status.historyProblem) value.set("historyProblem", toValue(*status.historyProblem));
  return value;
}

Value topValue(UsageKey by, const std::vector<AppUsage>& apps,
               const std::optional<std::vector<ProcessUsage>>& processes, const Measurement& measured) {
  auto value = Value::object({{"by", rawValue(by)}});
  auto list = Value::array();
  for (const auto& app : apps) list.append(appValue(app));
  value.set("apps", std::move(list));
  if (processes) value.set("processes", toValue(*processes));
  value.set("known", toValue(measured.known));
  if (measured.privileged) value.set("privileged", toValue(*measured.privileged));
  return value;
}

Value ownerValue(ProcessID pid, const ProcessSampler::Identity& process) {
  const auto& [owner, rule] = process.owner;
  auto value = Value::object({{"pid", std::int64_t{pid}},
                              {"name", process.name()},
                              {"path", process.path()},
                              {"app", owner->key},
                              {"appName", owner->name},
                              {"rule", std::string(rule)},
                              {"controlGroup", process.facts.controlGroup},
                              {"desktopFile", process.facts.desktopFile},
                              {"user", std::int64_t{process.facts.user}}});
  value.set("bundlePath", owner->bundlePath);
  return value;
}

// What was recorded

namespace {

Value valuesOf(const HistoryValues& values) {
  Value object = Value::object();
  for (const auto& row : historyColumns) object.set(row.name, values[row.column]);
  return object;
}

} // namespace

Value seriesValue(Metric metric, HistoryRange range, const std::vector<HistoryPoint>& points,
                  const std::optional<SeriesSummary>& summary) {
  Value value =
      Value::object({{"metric", rawValue(metric)}, {"range", rawValue(range)}, {"points", toValue(points)}});
  if (!summary) return value;
  return value.set("minimum", summary->minimum).set("mean", summary->mean).set("maximum", summary->maximum);
}

Value topAppsValue(Metric metric, HistoryRange range, const std::vector<AppTotal>& apps) {
  return Value::object({{"metric", rawValue(metric)}, {"range", rawValue(range)}, {"apps", toValue(apps)}});
}

Value minuteValue(const std::optional<HistoryMinute>& minute, Date asked) {
  if (!minute) return Value::object({{"date", asked}, {"apps", Value::array()}});
  Value apps = Value::array();
  for (const HistoryApp& app : minute->apps) {
    Value value = Value::object({{"id", app.id}, {"name", app.name}});
    value.set("bundlePath", app.path);
    value.set("values", valuesOf(app.values));
    apps.append(std::move(value));
  }
  Value value = Value::object({{"date", Date{double(minute->ts)}}, {"system", valuesOf(minute->system)}});
  value.set("score", minute->score);
  value.set("apps", std::move(apps));
  return value;
}

// Lists

Value serversValue(const std::vector<DevProject>& projects, bool isIdleKnown) {
  return Value::object({{"projects", toValue(projects)}, {"idleKnown", isIdleKnown}});
}

Value sensorsValue(const SensorsSnapshot& sensors, const std::vector<PeripheralBattery>& peripherals) {
  return toValue(sensors).set("peripherals", toValue(peripherals));
}

Value startupItemsValue(const std::vector<StartupItem>& items) {
  return Value::object({{"items", toValue(items)}});
}

Value alertsValue(const std::vector<HealthAlert>& alerts, std::size_t unseen) {
  return Value::object({{"alerts", toValue(alerts)}, {"new", std::int64_t(unseen)}});
}

Value alertKindsValue(const UserDefaults& defaults) {
  Value kinds = Value::array();
  for (const auto& kind : allCases<HealthAlert::Kind>())
    kinds.append(Value::object({{"kind", kind.rawValue},
                                {"title", localized(kind.title)},
                                {"enabled", isEnabled(kind.value, defaults)}}));
  return Value::object({{"kinds", std::move(kinds)}});
}

Value weeklyReportValue(bool isEnabled, const std::optional<Notification>& report) {
  Value value = Value::object({{"enabled", isEnabled}});
  return report ? value.set("title", report->title).set("body", report->body) : value;
}

Value lastReportValue(const std::optional<SentReport>& report) {
  Value value = Value::object();
  return report ? value.set("last", toValue(*report)) : value;
}

Value widgetValue(const std::string& path, const std::optional<WidgetSnapshot>& document,
                  std::optional<std::size_t> placed) {
  Value value = Value::object({{"path", path}});
  if (placed) value.set("placed", std::uint64_t{*placed});
  if (document) value.set("writtenAt", document->date).set("document", document->value());
  return value;
}

Value planLimitsValue(const AIUsageSummary& usage) {
  Value value = Value::object();
  if (usage.codexLimits) value.set("codexLimits", toValue(*usage.codexLimits));
  return value.set("updatedAt", usage.updatedAt);
}

Value storageLogValue(const UserDefaults& defaults) {
  return Value::object(
      {{"freedTotal", StorageLog::total(defaults)}, {"entries", toValue(StorageLog::entries(defaults))}});
}

Value helperValue(UsageHelperStatus status, bool isOffered) {
  return Value::object({{"status", rawValue(status)}, {"isOffered", isOffered}});
}

Value doctorValue(const std::vector<SourceReport>& sources, double cycleMicroseconds,
                  std::uint64_t residentBytes) {
  return Value::object({{"sources", toValue(sources)},
                        {"cycleMicroseconds", cycleMicroseconds},
                        {"residentBytes", residentBytes}});
}

} // namespace korvell
