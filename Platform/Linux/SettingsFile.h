#pragma once
// The user's settings as one JSON object in settings.json, its members in the order in which they were first
// set: a file for people to read and edit. Nothing is kept in memory between calls.
//
// Changes exclude each other, also between processes, through a lock on settings.json.lock beside it; one
// that does not get the lock within five seconds fails. A file that is no JSON object is never overwritten:
// the first change renames it to settings.json.damaged-<time> and starts anew. One that can't be read fails
// every change.

#include "Platform/UserDefaults.h"

namespace korvell {

class SettingsFile final : public UserDefaults {
public:
  /// `folder` is made, with mode 0700, when the first setting is stored. The clock dates damaged files.
  SettingsFile(std::string folder, const Clock& clock);

  std::optional<Value> value(std::string_view key) const override;
  /// `change` must not use these settings itself.
  bool update(std::string_view key,
              const std::function<std::optional<Value>(std::optional<Value>)>& change) override;

private:
  enum class State { sound, missing, damaged, unreadable };
  struct Content {
    State state;
    Value members;
  };
  Content read() const;
  bool setAside() const;

  const std::string folder_;
  const std::string path_;
  const Clock& clock_;
};

} // namespace korvell
