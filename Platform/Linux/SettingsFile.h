#pragma once
// The user's settings as one JSON object in settings.json, its members in the order in which they were first
// set: a file for people to read and edit.
//
// Changes exclude each other, also between processes, through a lock on settings.json.lock beside it; one
// that does not get the lock within five seconds fails. A file that can't be read or is no JSON object is
// never written: changes fail until somebody has mended it. Meanwhile the values are those of
// settings.json.good, a copy for that purpose alone: whoever changes the file, or reads well what somebody
// else changed, brings it up to date, so that all processes fall back on the same. Where it can't be written
// they are what this object read last. An empty or missing file means the defaults and is not copied.

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
    std::string text; ///< what they were read from; empty without a file and with an empty one
    std::optional<std::string> trouble; ///< why there are no members, a sentence
  };
  Content read() const;
  bool keep(const std::string& text) const;
  bool keepCopy(const std::string& text) const;
  // With the mutex held.
  Content readAndKeep() const;
  std::optional<Value> lastGood() const;

  const std::string folder_;
  const std::string path_;
  const std::string copy_;
  mutable std::mutex mutex_;
  // Guarded by the mutex:
  mutable std::string lastText_;
  mutable std::optional<Value> lastRead_; ///< of lastText_
  mutable bool kept_ = false;             ///< lastText_ has been in the copy
};

} // namespace korvell
