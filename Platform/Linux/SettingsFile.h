#pragma once
// The user's settings as one JSON object in settings.json, its members in the order in which they were first
// set: a file for people to read and edit.
//
// Changes exclude each other, also between processes, through a lock on settings.json.lock beside it; one
// that does not get the lock within five seconds fails. A file that can't be read or is no JSON object is
// never written: changes fail until somebody has mended it. Meanwhile the values are those that this object
// read last, or else those that the last change left in settings.json.good, a copy for that purpose alone.

#include "Platform/UserDefaults.h"

#include <mutex>

namespace korvell {

class SettingsFile final : public UserDefaults {
public:
  /// `folder` is made, with mode 0700, when the first setting is stored.
  explicit SettingsFile(std::string folder);

  std::optional<Value> value(std::string_view key) const override;
  /// `change` must not use these settings itself.
  bool update(std::string_view key,
              const std::function<std::optional<Value>(std::optional<Value>)>& change) override;
  std::optional<std::string> trouble() const override;
  std::string place() const override { return path_; }

private:
  struct Content {
    Value members;
    std::optional<std::string> trouble; ///< why there are no members, a sentence
  };
  Content read() const;
  std::optional<Value> lastGood() const;

  const std::string folder_;
  const std::string path_;
  const std::string copy_;
  mutable std::mutex mutex_;
  mutable std::optional<Value> lastRead_; ///< guarded by the mutex
};

} // namespace korvell
