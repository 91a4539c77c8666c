#pragma once
// The system's user defaults under the application's identifier, which the tool names too, so that both see
// the same settings wherever the tool was started from.
//
// The system's store has no operation that reads and writes in one step: changes exclude each other through a
// lock file. Another program that writes the same key meanwhile (`defaults write`) is not kept out.

#include "Platform/UserDefaults.h"

namespace korvell {

class SystemUserDefaults final : public UserDefaults {
public:
  /// `lockFolder` is made, with mode 0700, when the first setting is stored.
  explicit SystemUserDefaults(std::string lockFolder);

  std::optional<Value> value(std::string_view key) const override;
  /// `change` must not use these settings itself.
  bool update(std::string_view key,
              const std::function<std::optional<Value>(std::optional<Value>)>& change) override;
  std::string place() const override;

private:
  const std::string lockFolder_;
};

} // namespace korvell
