#include "Platform/Posix/PosixLaunchItems.h"

#include "Base/Files.h"
#include "Base/Text.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <sys/stat.h>

namespace korvell {

namespace {

/// Far more than any of these files takes.
constexpr std::size_t largestFile = 256 * 1024;

std::string_view suffixOf(LaunchFormat format) {
  switch (format) {
  case LaunchFormat::propertyList:
    return ".plist";
  case LaunchFormat::desktopEntry:
    return ".desktop";
  case LaunchFormat::systemdService:
    return ".service";
  }
  return {};
}

/// Paths of the folder's entries with this suffix, in the order of their bytes.
std::vector<std::string> entries(const std::string& folder, std::string_view suffix) {
  std::vector<std::string> paths;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    auto path = entry->path().string();
    if (path.ends_with(suffix) && path.size() > folder.size() + 1 + suffix.size())
      paths.push_back(std::move(path));
  }
  std::ranges::sort(paths);
  return paths;
}

/// The folder without links; empty when it is not there.
std::string realFolder(const std::string& folder) {
  std::error_code error;
  auto real = std::filesystem::canonical(folder, error).string();
  return error ? std::string() : real;
}

/// In the order of their names, whatever folder each is in. Of several of one name the first found counts, an
/// empty one or a link to nothing too: that is how one is masked.
std::string dropIns(const std::string& unit, const std::vector<std::string>& searched) {
  std::map<std::string, std::string> paths; // by name
  const auto look = [&paths](const std::string& folder) {
    for (auto& path : entries(folder, ".conf"))
      paths.try_emplace(path.substr(path.rfind('/') + 1), std::move(path));
  };
  const auto names = dropInNames(unit);
  for (const auto& folder : searched)
    for (const auto& name : names) look(folder + "/" + name);
  for (const auto& folder : searched) look(folder + "/" + dropInNameOfType(unit));
  std::string bytes;
  for (const auto& [name, path] : paths)
    if (const auto more = readFile(path, largestFile)) bytes += "\n" + *more;
  return bytes;
}

std::vector<std::string> below(const std::string& root, std::initializer_list<const char*> folders) {
  std::vector<std::string> paths;
  for (const auto* folder : folders) paths.push_back(root + folder);
  return paths;
}

/// systemd.unit(5), of the user's manager.
std::vector<std::string> userUnitFolders(const UserFolders& folders, const std::string& root) {
  auto searched = below(folders.configHome, {"/systemd/user.control"});
  const auto add = [&searched](std::vector<std::string> more) {
    searched.insert(searched.end(), more.begin(), more.end());
  };
  const auto runtime = folders.runtime.substr(0, folders.runtime.rfind('/'));
  const auto addRuntime = [&](std::initializer_list<const char*> names) {
    if (!runtime.empty()) add(below(runtime + "/systemd", names));
  };
  addRuntime({"/user.control", "/transient", "/generator.early"});
  add(below(folders.configHome, {"/systemd/user"}));
  add(below(root, {"/etc/xdg/systemd/user", "/etc/systemd/user"}));
  addRuntime({"/user"});
  add(below(root, {"/run/systemd/user"}));
  addRuntime({"/generator"});
  add(below(folders.dataHome, {"/systemd/user"}));
  add(below(root, {"/usr/local/share/systemd/user", "/usr/share/systemd/user", "/usr/local/lib/systemd/user",
                   "/usr/lib/systemd/user"}));
  addRuntime({"/generator.late"});
  return searched;
}

/// Likewise, of the system's.
std::vector<std::string> systemUnitFolders(const std::string& root) {
  return below(root, {"/etc/systemd/system.control", "/run/systemd/system.control", "/run/systemd/transient",
                      "/run/systemd/generator.early", "/etc/systemd/system", "/etc/systemd/system.attached",
                      "/run/systemd/system", "/run/systemd/system.attached", "/run/systemd/generator",
                      "/usr/local/lib/systemd/system", "/usr/lib/systemd/system", "/lib/systemd/system",
                      "/run/systemd/generator.late"});
}

} // namespace

std::vector<LaunchFolder> macOSLaunchFolders(const UserFolders& folders, const std::string& root) {
  using enum LaunchFormat;
  return {{LaunchScope::user, propertyList, folders.home + "/Library/LaunchAgents", {}},
          {LaunchScope::allUsers, propertyList, root + "/Library/LaunchAgents", {}},
          {LaunchScope::system, propertyList, root + "/Library/LaunchDaemons", {}}};
}

std::vector<LaunchFolder> linuxLaunchFolders(const UserFolders& folders, const std::string& root) {
  using enum LaunchFormat;
  const auto ownEntries = folders.configHome + "/autostart", entries = root + "/etc/xdg/autostart";
  const auto ownUnits = folders.configHome + "/systemd/user", units = root + "/etc/systemd/user";
  const std::vector entryFolders{ownEntries, entries};
  const auto unitFolders = userUnitFolders(folders, root);
  return {{LaunchScope::user, desktopEntry, ownEntries, entryFolders},
          {LaunchScope::user, systemdService, ownUnits, unitFolders},
          {LaunchScope::allUsers, desktopEntry, entries, entryFolders},
          {LaunchScope::allUsers, systemdService, units, unitFolders},
          {LaunchScope::system, systemdService, root + "/etc/systemd/system", systemUnitFolders(root)}};
}

ProgramPlaces macOSProgramPlaces() {
  // launchd searches the system's four; a program of the others is found by jobs that set their own path.
  return {.folders = {"/usr/bin", "/bin", "/usr/sbin", "/sbin", "/usr/local/bin", "/opt/homebrew/bin"},
          .flatpakRoots = {}};
}

ProgramPlaces linuxProgramPlaces(const UserFolders& folders, std::string_view searchPath,
                                 const std::string& root) {
  ProgramPlaces places;
  for (const char* folder : {"/usr/local/sbin", "/usr/local/bin", "/usr/sbin", "/usr/bin", "/sbin", "/bin",
                             "/usr/local/games", "/usr/games", "/snap/bin"})
    places.folders.push_back(root + folder);
  // Sessions put these in front of the system's. They also count when this process began outside of one.
  for (const char* folder : {"/.local/bin", "/bin", "/.cargo/bin"})
    places.folders.push_back(folders.home + folder);
  for (const auto folder : split(searchPath, ':'))
    if (folder.starts_with('/') && std::ranges::find(places.folders, folder) == places.folders.end())
      places.folders.emplace_back(folder);
  places.flatpakRoots = {root + "/var/lib/flatpak", folders.dataHome + "/flatpak"};
  return places;
}

std::vector<LaunchFile> PosixLaunchItems::files() {
  std::vector<LaunchFile> files;
  for (const auto& folder : folders_) {
    const auto real = realFolder(folder.path);
    for (auto& path : entries(folder.path, suffixOf(folder.format))) {
      struct stat status {};
      if (lstat(path.c_str(), &status) != 0) continue;
      if (folder.format != LaunchFormat::propertyList && S_ISLNK(status.st_mode)) continue;
      auto bytes = readFile(path, largestFile);
      if (!bytes) continue;
      if (folder.format == LaunchFormat::systemdService)
        *bytes += dropIns(path.substr(folder.path.size() + 1), folder.searched);
      files.push_back({.scope = folder.scope,
                       .format = folder.format,
                       .path = path,
                       .bytes = std::move(*bytes),
                       .location = real + path.substr(folder.path.size()),
                       .identity = {std::uint64_t(status.st_dev), std::uint64_t(status.st_ino)}});
    }
  }
  return files;
}

bool PosixLaunchItems::isMissing(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR);
}

} // namespace korvell
