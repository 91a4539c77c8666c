#pragma once
// What the user chose for each application, kept in the settings under "sound.apps": a list with one
// RememberedApp an application. Entries that can't be read count as none and stay as they are. From any
// thread; each call reads what is stored at that moment, as another process may have changed it.

#include "Audio/AudioApp.h"
#include "Platform/UserDefaults.h"

#include <string_view>
#include <vector>

namespace korvell {

class SoundMemory {
public:
  static constexpr std::string_view key = "sound.apps";
  /// What goes beyond is forgotten, the oldest choice first.
  static constexpr std::size_t mostApps = 200;

  explicit SoundMemory(UserDefaults& defaults) : defaults_(defaults) {}

  /// In the order of the choices, the last one last; volumes within their bounds, one an application.
  std::vector<RememberedApp> all() const;
  /// In the place of what was stored for the same key. False where it can't be stored.
  bool remember(const std::vector<RememberedApp>& apps);
  bool forget(std::string_view app);
  bool forgetAll();

private:
  UserDefaults& defaults_;
};

/// A value of that setting that holds nothing but readable entries.
bool isSoundMemory(const Value& value);

} // namespace korvell
