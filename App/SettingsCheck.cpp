#include "App/SettingsCheck.h"

#include "App/AppearanceChoice.h"
#include "App/LanguageChoice.h"
#include "App/MenuBarStyle.h"
#include "App/PanelSoundChoice.h"
#include "App/TemperatureUnit.h"
#include "Audio/SoundMemory.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/Health/SeenAlerts.h"
#include "Core/Health/WeeklyReport.h"
#include "Core/Storage/StorageFound.h"
#include "Core/Storage/StorageLog.h"
#include "Core/Storage/StorageModels.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr Seconds pause{60}, leeway{30};
constexpr int mostColumns = 40; ///< of a value that is shown

enum class Kind {
  truth,
  number,
  date,
  menuBarStyle,
  appearance,
  language,
  temperatureUnit,
  freedLog,
  found,
  report,
  file,
  sounds
};

struct KindRow {
  Kind kind;
  const char* expected;
  bool (*fits)(const Value&);
};

bool isFreedLog(const Value& value) {
  const auto* entries = value.asArray();
  return entries && std::ranges::all_of(*entries, [](const Value& entry) {
           FreedEntry freed;
           return entry.asObject() && fromValue(entry, freed);
         });
}

bool isFound(const Value& value) {
  const auto* kinds = value.asObject();
  return kinds && std::ranges::all_of(*kinds, [](const Value::Member& kind) {
           StorageFound found;
           return kind.second.asObject() && fromValue(kind.second, found);
         });
}

constexpr KindRow kinds[] = {
    {Kind::truth, "true or false", [](const Value& value) { return value.asBool().has_value(); }},
    {Kind::number, "a whole number", [](const Value& value) { return value.asInt().has_value(); }},
    {Kind::date, "a date and time", [](const Value& value) { return value.asDate().has_value(); }},
    {Kind::menuBarStyle, "one of icon, score, cpuAndMemory and graphs",
     [](const Value& value) {
       return value.asString() && fromRawValue<MenuBarStyle>(*value.asString()).has_value();
     }},
    {Kind::appearance, "one of system, light and dark",
     [](const Value& value) {
       return value.asString() && fromRawValue<AppearanceChoice>(*value.asString()).has_value();
     }},
    {Kind::language, "one of system, en and de",
     [](const Value& value) {
       return value.asString() && fromRawValue<LanguageChoice>(*value.asString()).has_value();
     }},
    {Kind::temperatureUnit, "one of celsius and fahrenheit",
     [](const Value& value) {
       return value.asString() && fromRawValue<TemperatureUnit>(*value.asString()).has_value();
     }},
    {Kind::freedLog, "a list of dates with bytes", isFreedLog},
    {Kind::found, "bytes and a date for each kind", isFound},
    {Kind::report, "a date, a title and a body",
     [](const Value& value) { return sentReport(value).has_value(); }},
    {Kind::file, "an absolute path that ends in .prom",
     [](const Value& value) {
       const auto* path = value.asString();
       return path && path->starts_with('/') && path->ends_with(".prom");
     }},
    {Kind::sounds, "a list of applications with their volumes", isSoundMemory},
};

struct Setting {
  std::string key;
  Kind kind;
  bool isUsers = true; ///< to choose; the others are what Korvell remembers
};

/// Every setting whose name is known beforehand.
std::vector<Setting> settings() {
  std::vector<Setting> all = {{std::string(menuBarStyleKey), Kind::menuBarStyle},
                              {std::string(appearanceKey), Kind::appearance},
                              {std::string(languageKey), Kind::language},
                              {std::string(temperatureUnitKey), Kind::temperatureUnit}};
  for (const auto& kind : allCases<HealthAlert::Kind>())
    all.push_back({defaultsKey(kind.value), Kind::truth});
  all.push_back({std::string(WeeklyReport::enabledKey), Kind::truth});
  all.push_back({std::string(panelSoundKey), Kind::truth});
  all.push_back({std::string(metricsFileKey), Kind::file});
  all.push_back({std::string(alertsSeenKey), Kind::date, false});
  all.push_back({std::string(WeeklyReport::lastSentKey), Kind::date, false});
  all.push_back({std::string(WeeklyReport::lastReportKey), Kind::report, false});
  all.push_back({std::string(StorageLog::totalKey), Kind::number, false});
  all.push_back({std::string(StorageLog::logKey), Kind::freedLog, false});
  all.push_back({std::string(StorageFound::key), Kind::found, false});
  all.push_back({std::string(SoundMemory::key), Kind::sounds, false});
  return all;
}

const KindRow& rowOf(Kind kind) { return *std::ranges::find(kinds, kind, &KindRow::kind); }

} // namespace

std::vector<Trouble> settingsTroubles(const UserDefaults& defaults) {
  std::vector<Trouble> troubles;
  if (auto trouble = defaults.trouble())
    troubles.push_back({std::move(*trouble), "The settings can't be read."});
  for (const auto& [key, kind, isUsers] : settings()) {
    const auto value = defaults.value(key);
    const auto& row = rowOf(kind);
    if (!value || row.fits(*value)) continue;
    const auto found = truncatedToWidth(escapedControls(dumpJSON(*value)), mostColumns);
    const auto sentence =
        (kind == Kind::freedLog || kind == Kind::sounds) && value->asArray()
            ? "The setting {key} takes {expected}, but {found} is stored; only what can be read counts."
            : "The setting {key} takes {expected}, but {found} is stored; its default applies.";
    troubles.push_back(
        troubleOf(sentence, {{"key", key}, {"expected", localized(row.expected)}, {"found", found}}, key));
  }
  return troubles;
}

std::vector<std::pair<std::string, std::string>> namelessSettings(const UserDefaults& defaults) {
  std::vector<std::pair<std::string, std::string>> chosen;
  for (const auto& [key, kind, isUsers] : settings()) {
    const auto value = isUsers ? defaults.value(key) : std::nullopt;
    if (!value) continue;
    const bool fits = rowOf(kind).fits(*value);
    chosen.emplace_back(key, !fits ? "not understood" : kind == Kind::file ? "set" : dumpJSON(*value));
  }
  return chosen;
}

std::string settingRefusal(std::string_view key, const Value& value) {
  const auto all = settings();
  const auto setting = std::ranges::find(all, key, &Setting::key);
  if (setting == all.end()) return localized("There is no setting {key}.", {{"key", std::string(key)}});
  if (!setting->isUsers) return localized("Korvell keeps {key} by itself.", {{"key", std::string(key)}});
  const auto& row = rowOf(setting->kind);
  if (value.isNull() || row.fits(value)) return "";
  return localized("The setting {key} takes {expected}.",
                   {{"key", std::string(key)}, {"expected", localized(row.expected)}});
}

std::string storingTrouble(const UserDefaults& defaults) {
  return defaults.trouble() ? localized("nothing was changed: the settings have to be mended first")
                            : localized("the setting could not be stored");
}

SettingsWatch::SettingsWatch(Queue& queue, const UserDefaults& defaults,
                             std::function<void(const Trouble&)> tell)
    : defaults_(defaults), tell_(std::move(tell)), known_(settingsTroubles(defaults)),
      timer_(queue.timer([this] { look(); })) {
  timer_->schedule(pause, pause, leeway);
}

void SettingsWatch::look() {
  auto troubles = settingsTroubles(defaults_);
  for (const auto& trouble : troubles)
    if (std::ranges::find(known_, trouble) == known_.end()) tell_(trouble);
  known_ = std::move(troubles);
}

} // namespace korvell
