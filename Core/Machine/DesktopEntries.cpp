#include "Core/Machine/DesktopEntries.h"

#include "Base/Text.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr std::string_view group = "Desktop Entry";

// Programs that run other people's programs: many entries start them, and their processes belong to what
// they run.
constexpr std::string_view interpreters[] = {
    "sh",  "bash", "dash", "zsh",  "fish", "env",      "python", "perl",    "ruby",     "node", "java",
    "gjs", "lua",  "wine", "mono", "php",  "xdg-open", "gio",    "flatpak", "electron", "snap"};

// The last components of folders where programs of many applications lie side by side.
constexpr std::string_view sharedFolders[] = {"bin", "sbin", "lib",   "lib64", "libexec", "games",
                                              "opt", "usr",  "local", "share", "home",    "tmp"};

bool isInterpreter(std::string_view program) {
  const auto name = program.substr(program.rfind('/') + 1);
  // "python3.11" is python, "nodejs" is node; a name that merely begins alike is not.
  return std::ranges::any_of(interpreters, [name](std::string_view interpreter) {
    if (!name.starts_with(interpreter)) return false;
    const auto rest = name.substr(interpreter.size());
    return rest == "js" || rest.find_first_not_of("0123456789.-") == std::string_view::npos;
  });
}

bool isTrue(const KeyFile& file, std::string_view key) {
  return file.last(group, key).value_or("") == "true";
}

std::string localizedName(const KeyFile& file, std::string_view locale) {
  const auto language = locale.substr(0, locale.find_first_of("_.@"));
  const auto territory = locale.substr(0, locale.find_first_of(".@"));
  for (const auto wanted : {territory, language})
    if (!wanted.empty())
      if (const auto name = file.last(group, "Name[" + std::string(wanted) + "]"); name && !name->empty())
        return std::string(*name);
  return std::string(file.last(group, "Name").value_or(""));
}

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(const DesktopFile& file, std::string_view locale,
                                              DesktopFiles& programs) {
  const auto keys = KeyFile::parseDesktopEntry(file.text);
  if (keys.last(group, "Type").value_or("") != "Application" || isTrue(keys, "Hidden")) return std::nullopt;
  DesktopEntry entry{.path = file.path, .name = localizedName(keys, locale)};
  if (entry.name.empty()) entry.name = file.id;
  entry.program =
      programs.realProgram(desktopEntryProgram(keys.last(group, "Exec").value_or("")).value_or(""))
          .value_or("");
  entry.ownsItsProgram = !entry.program.empty() && !isTrue(keys, "Terminal") && !isTrue(keys, "NoDisplay") &&
                         !isInterpreter(entry.program);
  return entry;
}

std::optional<std::string> installFolder(std::string_view program) {
  const auto slash = program.rfind('/');
  if (slash == std::string_view::npos || slash == 0) return std::nullopt;
  auto folder = program.substr(0, slash);
  // "/opt/app/bin/app" belongs to "/opt/app", "/usr/bin/app" to nobody alone.
  const auto last = [&folder] { return folder.substr(folder.rfind('/') + 1); };
  const auto isShared = [&] { return std::ranges::find(sharedFolders, last()) != std::end(sharedFolders); };
  if (last() == "bin") folder = folder.substr(0, folder.rfind('/'));
  // A folder straight below the root or a home folder holds more than one application.
  const auto depth = std::ranges::count(folder, '/');
  if (folder.empty() || isShared() || depth < 2 || (folder.starts_with("/home/") && depth < 3))
    return std::nullopt;
  if (last().find("linux-gnu") != std::string_view::npos) return std::nullopt; // libraries by architecture
  return std::string(folder);
}

void DesktopEntries::refresh() {
  const auto stamp = files_.stamp();
  if (stamp_ == stamp) return;
  stamp_ = stamp;
  byID_.clear();
  byProgram_.clear();
  byFolder_.clear();
  for (const auto& file : files_.read()) {
    auto entry = parseDesktopEntry(file, locale_, files_);
    if (!entry) continue;
    const auto& kept = byID_.insert_or_assign(file.id, std::move(*entry)).first->second;
    if (!kept.ownsItsProgram) continue;
    byProgram_.try_emplace(kept.program, &kept);
    if (const auto folder = installFolder(kept.program)) byFolder_.try_emplace(*folder, &kept);
  }
}

const DesktopEntry* DesktopEntries::byID(std::string_view id) const {
  if (const auto exact = byID_.find(id); exact != byID_.end()) return &exact->second;
  const auto lower = lowercased(id);
  const auto alike = std::ranges::find(byID_, lower, [](const auto& item) { return lowercased(item.first); });
  return alike == byID_.end() ? nullptr : &alike->second;
}

const DesktopEntry* DesktopEntries::bySnap(std::string_view snap) const {
  const auto prefix = std::string(snap) + "_";
  const auto found = byID_.lower_bound(prefix);
  return found != byID_.end() && found->first.starts_with(prefix) ? &found->second : nullptr;
}

const DesktopEntry* DesktopEntries::byProgram(std::string_view executable) const {
  if (const auto exact = byProgram_.find(executable); exact != byProgram_.end()) return exact->second;
  for (auto end = executable.rfind('/'); end != std::string_view::npos && end > 0;
       end = executable.rfind('/', end - 1))
    if (const auto found = byFolder_.find(executable.substr(0, end)); found != byFolder_.end())
      return found->second;
  return nullptr;
}

const DesktopEntry* DesktopEntries::byName(std::string_view name) const {
  const auto lower = lowercased(name);
  const auto isCalled = [&lower](const auto& item) { return lowercased(item.second.name) == lower; };
  const auto found = std::ranges::find_if(byID_, isCalled);
  if (found == byID_.end() || std::any_of(std::next(found), byID_.end(), isCalled)) return nullptr;
  return &found->second;
}

const DesktopEntry* DesktopEntries::byPath(std::string_view path) const {
  const auto found =
      std::ranges::find(byID_, path, [](const auto& item) { return std::string_view(item.second.path); });
  return found == byID_.end() ? nullptr : &found->second;
}

} // namespace korvell
