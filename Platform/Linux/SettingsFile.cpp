#include "Platform/Linux/SettingsFile.h"

#include "Base/FileLock.h"
#include "Base/Files.h"
#include "Base/Text.h"
#include "Base/UserFolders.h"

#include <cerrno>
#include <cstdio>
#include <sys/stat.h>

namespace korvell {

namespace {

constexpr std::size_t mostBytes = std::size_t{16} << 20;
constexpr Seconds lockPatience{5};

std::optional<Value> stored(const Value& members, std::string_view key) {
  const Value* value = members.find(key);
  if (!value || value->isNull()) return std::nullopt;
  return *value;
}

} // namespace

SettingsFile::SettingsFile(std::string folder, const Clock& clock)
    : folder_(std::move(folder)), path_(folder_ + "/settings.json"), clock_(clock) {}

SettingsFile::Content SettingsFile::read() const {
  int error = 0;
  const auto text = readFile(path_, mostBytes, &error);
  if (!text) {
    if (error == ENOENT || error == ENOTDIR) return {State::missing, {}};
    return {error == EFBIG ? State::damaged : State::unreadable, {}};
  }
  if (trimmed(*text).empty()) return {State::missing, {}};
  auto members = parseJSON(*text);
  if (!members || !members->asObject()) return {State::damaged, {}};
  return {State::sound, std::move(*members)};
}

std::optional<Value> SettingsFile::value(std::string_view key) const { return stored(read().members, key); }

/// Under a name that is still free.
bool SettingsFile::setAside() const {
  const std::string file = followedLinks(path_);
  std::string aside = file + ".damaged-" + rfc3339(clock_.now());
  struct stat info {};
  while (lstat(aside.c_str(), &info) == 0) aside += "-again";
  return std::rename(file.c_str(), aside.c_str()) == 0;
}

bool SettingsFile::update(std::string_view key,
                          const std::function<std::optional<Value>(std::optional<Value>)>& change) {
  if (!ensurePrivateFolder(folder_)) return false;
  const auto lock = FileLock::acquire(path_ + ".lock", lockPatience);
  if (!lock) return false;
  auto content = read();
  if (content.state == State::unreadable) return false;
  Value members = content.state == State::sound ? content.members : Value::object();
  if (auto value = change(stored(members, key)))
    members.set(key, std::move(*value));
  else
    members.erase(key);
  if (content.state != State::damaged && members == content.members) return true;
  if (content.state == State::damaged && !setAside()) return false;
  return replaceFile(path_, dumpJSON(members, JSONStyle::indented) + "\n");
}

} // namespace korvell
