#include "Platform/Linux/SettingsFile.h"

#include "Base/FileLock.h"
#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Base/UserFolders.h"

#include <cerrno>
#include <cstring>

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

SettingsFile::SettingsFile(std::string folder)
    : folder_(std::move(folder)), path_(folder_ + "/settings.json"), copy_(path_ + ".good") {}

SettingsFile::Content SettingsFile::read() const {
  int error = 0;
  const auto text = readFile(path_, mostBytes, &error);
  const auto unreadable = [&](const std::string& reason) {
    return Content{
        {},
        localized("The settings in {file} can't be read: {reason}.", {{"file", path_}, {"reason", reason}})};
  };
  const bool isMissing = !text && (error == ENOENT || error == ENOTDIR);
  if (!text && !isMissing) return unreadable(std::strerror(error));
  if (isMissing || trimmed(*text).empty()) return {Value::object(), {}};
  JSONFault fault;
  auto members = parseJSON(*text, &fault);
  if (members && members->asObject()) return {std::move(*members), {}};
  if (members) return unreadable(localized("they are no JSON object"));
  return unreadable(
      localized("line {line}, column {column} is no JSON",
                {{"line", std::to_string(fault.line)}, {"column", std::to_string(fault.column)}}));
}

/// Of a file that can't be read now.
std::optional<Value> SettingsFile::lastGood() const {
  if (lastRead_) return lastRead_;
  const auto text = readFile(copy_, mostBytes);
  return text ? parseJSON(*text) : std::nullopt;
}

std::optional<Value> SettingsFile::value(std::string_view key) const {
  auto content = read();
  const std::lock_guard lock(mutex_);
  if (!content.trouble)
    lastRead_ = std::move(content.members);
  else if (!lastRead_)
    lastRead_ = lastGood().value_or(Value::object());
  return stored(*lastRead_, key);
}

std::optional<std::string> SettingsFile::trouble() const {
  auto content = read();
  if (!content.trouble) return std::nullopt;
  const std::lock_guard lock(mutex_);
  const auto meanwhile = lastGood()
                             ? localized("The last settings that could be read apply until the file is "
                                         "mended, and none can be changed.")
                             : localized("Every setting is at its default until the file is mended, and "
                                         "none can be changed.");
  return *content.trouble + " " + meanwhile;
}

bool SettingsFile::update(std::string_view key,
                          const std::function<std::optional<Value>(std::optional<Value>)>& change) {
  if (!ensurePrivateFolder(folder_)) return false;
  const auto lock = FileLock::acquire(path_ + ".lock", lockPatience);
  if (!lock) return false;
  const auto content = read();
  if (content.trouble) return false;
  Value members = content.members;
  if (auto value = change(stored(members, key)))
    members.set(key, std::move(*value));
  else
    members.erase(key);
  if (members == content.members) return true;
  const auto text = dumpJSON(members, JSONStyle::indented) + "\n";
  if (!replaceFile(path_, text)) return false;
  [[maybe_unused]] const bool kept =
      replaceFile(copy_, text); // without it there is only less to fall back on
  return true;
}

} // namespace korvell
