#include "Platform/macOS/SystemUserDefaults.h"

#include "Base/FileLock.h"
#include "Base/UserFolders.h"
#include "Base/macOS/CoreFoundation.h"
#include "Platform/Formats/CodeRequirement.h"

namespace korvell {

namespace {

constexpr Seconds lockPatience{5};

CFOwned<CFStringRef> application() { return cfString(applicationIdentifier); }

} // namespace

SystemUserDefaults::SystemUserDefaults(std::string lockFolder) : lockFolder_(std::move(lockFolder)) {}

std::optional<Value> SystemUserDefaults::value(std::string_view key) const {
  const auto name = cfString(key);
  const auto identifier = application();
  if (!name) return std::nullopt;
  CFPreferencesAppSynchronize(identifier.get()); // what other processes wrote
  const CFOwned<CFPropertyListRef> object(CFPreferencesCopyAppValue(name.get(), identifier.get()));
  auto value = cfValue(object.get());
  if (value.isNull()) return std::nullopt;
  return value;
}

std::string SystemUserDefaults::place() const { return std::string(applicationIdentifier); }

bool SystemUserDefaults::update(std::string_view key,
                                const std::function<std::optional<Value>(std::optional<Value>)>& change) {
  const auto name = cfString(key);
  const auto identifier = application();
  if (!name || !ensurePrivateFolder(lockFolder_)) return false;
  const auto lock = FileLock::acquire(lockFolder_ + "/settings.lock", lockPatience);
  if (!lock) return false;
  const auto changed = change(value(key));
  const auto object = changed ? cfObject(*changed) : CFOwned<CFTypeRef>();
  if (changed && !changed->isNull() && !object) return false; // not representable
  CFPreferencesSetAppValue(name.get(), object.get(), identifier.get());
  return CFPreferencesAppSynchronize(identifier.get());
}

} // namespace korvell
