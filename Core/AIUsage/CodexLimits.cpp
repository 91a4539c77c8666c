#include "Core/AIUsage/CodexLimits.h"

#include "Core/AIUsage/Names.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr double secondsFrom1970To2001 = 978'307'200;

double boundedPercent(double percent) { return std::clamp(percent, 0.0, AIPlanLimit::largestPercent); }

std::optional<AIPlanLimit> planLimit(const std::optional<CodexWindow>& window) {
  if (!window || !window->used_percent || !window->resets_at) return std::nullopt;
  return AIPlanLimit{boundedPercent(*window->used_percent),
                     std::max<std::int64_t>(window->window_minutes.value_or(0), 0),
                     {*window->resets_at}};
}

Value encoded(const AIPlanLimit& limit) {
  return Value::object({{"usedPercent", limit.usedPercent},
                        {"windowMinutes", limit.windowMinutes},
                        {"resetsAt", limit.resetsAt.sinceEpoch - secondsFrom1970To2001}});
}

std::optional<double> number(const Value& object, std::string_view name) {
  const auto* member = object.find(name);
  return member ? member->asDouble() : std::nullopt;
}

/// False when the member is there but is no limit.
bool decodeLimit(const Value& object, std::string_view name, std::optional<AIPlanLimit>& result) {
  const auto* member = object.find(name);
  if (!member || member->isNull()) return true;
  const auto used = number(*member, "usedPercent"), resets = number(*member, "resetsAt");
  const auto* minutes = member->find("windowMinutes");
  if (!used || !resets || !minutes || !minutes->asInt()) return false;
  result = AIPlanLimit{
      boundedPercent(*used), std::max<std::int64_t>(*minutes->asInt(), 0), {*resets + secondsFrom1970To2001}};
  return true;
}

} // namespace

std::string AIPlanLimit::name() const {
  constexpr std::int64_t hour = 60, day = 1'440, week = 10'080;
  if (windowMinutes <= 0) return localized("Plan");
  if (windowMinutes == week) return localized("Weekly");
  if (windowMinutes == 5 * hour) return localized("5-hour");
  // With texts of their own, for languages in which one is not like several.
  if (windowMinutes == day) return localized("1-day");
  if (windowMinutes / hour == 1) return localized("1-hour");
  if (windowMinutes % day == 0) return localized("{n}-day", {{"n", std::to_string(windowMinutes / day)}});
  return localized("{n}-hour", {{"n", std::to_string(windowMinutes / hour)}});
}

std::optional<int> AIPlanLimit::wholePercent() const {
  if (std::isnan(usedPercent)) return std::nullopt;
  return int(boundedPercent(usedPercent));
}

std::vector<AIPlanLimit> AICodexLimits::limits() const {
  std::vector<AIPlanLimit> result;
  for (const auto* limit : {&primary, &secondary})
    if (*limit) result.push_back(**limit);
  return result;
}

std::optional<AIPlanLimit> AICodexLimits::tightest(Date now) const {
  std::optional<AIPlanLimit> result;
  for (const auto& limit : limits())
    if (limit.resetsAt > now && (!result || limit.usedPercent > result->usedPercent)) result = limit;
  return result;
}

void PlanReadings::take(AICodexLimits reading, Date now) {
  if (reading.date <= now) {
    if (reading.date >= (latest ? latest->date : Date::distantPast())) latest = std::move(reading);
  } else if (!ahead || reading.date <= ahead->date) {
    ahead = std::move(reading);
  }
}

void PlanReadings::take(PlanReadings readings, Date now) {
  for (auto* reading : {&readings.latest, &readings.ahead})
    if (*reading) take(std::move(**reading), now);
}

std::optional<AICodexLimits> limitsReading(std::optional<std::string_view> timestamp,
                                           const CodexRateLimits& limits) {
  const auto date = logDate(timestamp);
  if (!date) return std::nullopt;
  AICodexLimits reading{.date = *date};
  if (limits.plan_type) reading.plan = std::string(*limits.plan_type);
  reading.primary = planLimit(limits.primary);
  reading.secondary = planLimit(limits.secondary);
  return reading;
}

std::string encodeLimits(const AICodexLimits& limits) {
  Value json = Value::object({{"date", limits.date.sinceEpoch - secondsFrom1970To2001}});
  json.set("plan", limits.plan);
  if (limits.primary) json.set("primary", encoded(*limits.primary));
  if (limits.secondary) json.set("secondary", encoded(*limits.secondary));
  return dumpJSON(json);
}

std::optional<AICodexLimits> decodeLimits(std::string_view text) {
  const auto json = parseJSON(text);
  const auto date = json ? number(*json, "date") : std::nullopt;
  if (!date) return std::nullopt;
  AICodexLimits limits{.date = {*date + secondsFrom1970To2001}};
  if (const auto* plan = json->find("plan"); plan && !plan->isNull()) {
    if (!plan->asString()) return std::nullopt;
    limits.plan = *plan->asString();
  }
  if (!decodeLimit(*json, "primary", limits.primary) || !decodeLimit(*json, "secondary", limits.secondary))
    return std::nullopt;
  return limits;
}

} // namespace korvell
