#include "Platform/Linux/SettingsFile.h"

#include "Base/FileLock.h"
#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Base/UserFolders.h"

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

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
        {},
        localized("The settings in {file} can't be read: {reason}.", {{"file", path_}, {"reason", reason}})};
  };
  const bool isMissing = !text && (error == ENOENT || error == ENOTDIR);
  if (!text && !isMissing) return unreadable(std::strerror(error));
  if (isMissing || trimmed(*text).empty()) return {Value::object(), {}, {}};
  JSONFault fault;
  auto members = parseJSON(*text, &fault);
  if (members && members->asObject()) return {std::move(*members), *text, {}};
  if (members) return unreadable(localized("they are no JSON object"));
  return unreadable(
      localized(fault.tooLarge ? "the number at line {line}, column {column} is too large"
                               : "line {line}, column {column} is no JSON",
                {{"line", std::to_string(fault.line)}, {"column", std::to_string(fault.column)}}));
}

/// Not flushed: a power cut that takes the copy leaves the file that it was made of.
bool SettingsFile::keepCopy(const std::string& text) const {
  return replaceFile(copy_, text, Readers::owner, Flush::none);
}

/// Makes a text the copy to fall back on, unless the file has changed meanwhile. One that reads another
/// user's settings leaves nothing there that its user could not write any more.
bool SettingsFile::keep(const std::string& text) const {
  if (readFile(copy_, mostBytes) == text) return true;
  struct stat folder {};
  if (stat(folder_.c_str(), &folder) != 0 || folder.st_uid != geteuid()) return false;
  const auto lock = FileLock::acquire(path_ + ".lock", Seconds{0}); // whoever holds it keeps its own
  return lock && readFile(path_, mostBytes) == text && keepCopy(text);
}

SettingsFile::Content SettingsFile::readAndKeep() const {
  auto content = read();
  if (content.text.empty() || (kept_ && content.text == lastText_)) return content;
  kept_ = keep(content.text);
  lastText_ = content.text;
  lastRead_ = content.members;
  return content;
}

/// Of a file that can't be read now. The copy is the newest that any process has read.
std::optional<Value> SettingsFile::lastGood() const {
  if (lastRead_ && !kept_) return lastRead_;
  const auto text = readFile(copy_, mostBytes);
  auto members = text ? parseJSON(*text) : std::nullopt;
  return members && members->asObject() ? members : lastRead_;
}

std::optional<Value> SettingsFile::value(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  const auto content = readAndKeep();
  if (!content.trouble) return stored(content.members, key);
  const auto members = lastGood();
  return members ? stored(*members, key) : std::nullopt;
}

std::optional<std::string> SettingsFile::trouble() const {
  const std::lock_guard lock(mutex_);
  const auto content = readAndKeep();
  if (!content.trouble) return std::nullopt;
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
  (void)keepCopy(text); // without it there is only less to fall back on
  return true;
}

} // namespace korvell
