#include "Audio/SoundMemory.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

std::optional<RememberedApp> readEntry(const Value& stored) {
  RememberedApp app;
  if (!stored.asObject() || !fromValue(stored, app) || app.key.empty() || !std::isfinite(app.volume))
    return std::nullopt;
  app.volume = std::clamp(app.volume, 0.0, loudestApp);
  if (app.name.empty()) app.name = app.key;
  return app;
}

bool isOf(const Value& stored, std::string_view app) {
  const auto* key = stored.find("key");
  return key && key->asString() && *key->asString() == app;
}

/// The stored list, changed; what is stored is no list: left alone.
bool change(UserDefaults& defaults, const std::function<void(Value::Array& entries)>& edit) {
  bool isList = true;
  const bool kept = defaults.update(SoundMemory::key, [&](std::optional<Value> stored) {
    isList = !stored || stored->asArray();
    if (!isList) return stored;
    auto entries = stored ? *stored->asArray() : Value::Array();
    edit(entries);
    return entries.empty() ? std::optional<Value>() : Value(std::move(entries));
  });
  return kept && isList;
}

void dropOldest(Value::Array& entries) {
  for (auto entry = entries.begin(); entries.size() > SoundMemory::mostApps && entry != entries.end();)
    entry = readEntry(*entry) ? entries.erase(entry) : std::next(entry);
}

} // namespace

std::vector<RememberedApp> SoundMemory::all() const {
  std::vector<RememberedApp> apps;
  const auto stored = defaults_.value(key);
  if (!stored || !stored->asArray()) return apps;
  for (const auto& entry : *stored->asArray())
    if (auto app = readEntry(entry); app && !std::ranges::count(apps, app->key, &RememberedApp::key))
      apps.push_back(std::move(*app));
  return apps;
}

bool SoundMemory::remember(const std::vector<RememberedApp>& apps) {
  return change(defaults_, [&](Value::Array& entries) {
    for (const auto& app : apps) {
      // The last choice stands last.
      std::erase_if(entries, [&](const Value& entry) { return isOf(entry, app.key); });
      entries.push_back(toValue(app));
    }
    dropOldest(entries);
  });
}

bool SoundMemory::forget(std::string_view app) {
  return change(defaults_, [app](Value::Array& entries) {
    std::erase_if(entries, [app](const Value& entry) { return isOf(entry, app); });
  });
}

bool SoundMemory::forgetAll() {
  return change(defaults_, [](Value::Array& entries) {
    std::erase_if(entries, [](const Value& entry) { return readEntry(entry).has_value(); });
  });
}

bool isSoundMemory(const Value& value) {
  const auto* entries = value.asArray();
  return entries && std::ranges::all_of(*entries, [](const Value& entry) { return bool(readEntry(entry)); });
}

} // namespace korvell
