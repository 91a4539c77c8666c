#pragma once
// The user's settings: on macOS the user defaults of the application's identifier, on Linux one JSON file in
// the configuration folder.
//
// Reading asks for the newest stored state, also when another process wrote it. Every change is atomic: two
// processes that change different keys at the same time both succeed, and one key is never half written. A
// setting that can't be stored (a full disk, a read-only folder) is lost and reported by `false`. While what
// is stored can't be read, reading answers with the last values that could be, and every change is refused,
// so that nothing is lost of what the user wrote. From any thread.

#include "Base/Date.h"
#include "Base/Value.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

class UserDefaults {
public:
  virtual ~UserDefaults() = default;
  virtual std::optional<Value> value(std::string_view key) const = 0;
  /// Reads, changes and stores one key with nobody else in between. `change` gets the stored value, or
  /// nothing, and returns the new one, or nothing to remove the key.
  virtual bool update(std::string_view key,
                      const std::function<std::optional<Value>(std::optional<Value>)>& change) = 0;
  /// Why the stored settings can't be read at this moment and what applies meanwhile, in sentences,
  /// localised; nothing while they can be read.
  virtual std::optional<std::string> trouble() const { return std::nullopt; }
  /// Where they are stored: a file, or the name that the system keeps them under.
  virtual std::string place() const = 0;

  bool set(std::string_view key, Value newValue) {
    return update(key, [&](std::optional<Value>) { return std::optional<Value>(std::move(newValue)); });
  }
  bool remove(std::string_view key) {
    return update(key, [](std::optional<Value>) { return std::optional<Value>(); });
  }

  // A value of the wrong type counts as absent; App/SettingsCheck names it to the user.
  bool boolean(std::string_view key, bool fallback) const {
    auto v = value(key);
    return v ? v->asBool().value_or(fallback) : fallback;
  }
  std::optional<std::int64_t> integer(std::string_view key) const {
    auto v = value(key);
    return v ? v->asInt() : std::nullopt;
  }
  std::optional<double> number(std::string_view key) const {
    auto v = value(key);
    return v ? v->asDouble() : std::nullopt;
  }
  std::optional<Date> date(std::string_view key) const {
    auto v = value(key);
    return v ? v->asDate() : std::nullopt;
  }
  std::optional<std::string> string(std::string_view key) const {
    auto v = value(key);
    if (!v || !v->asString()) return std::nullopt;
    return *v->asString();
  }
};

} // namespace korvell
