#include "Platform/Posix/PosixLaunchItems.h"

#include "Base/Files.h"
#include "Base/Text.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
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

std::string dropIns(const std::string& unitPath) {
  std::string bytes;
  for (const auto& path : entries(unitPath + ".d", ".conf"))
    if (const auto more = readFile(path, largestFile)) bytes += "\n" + *more;
  return bytes;
}

} // namespace

std::vector<LaunchFolder> macOSLaunchFolders(const UserFolders& folders, const std::string& root) {
  using enum LaunchFormat;
  return {{LaunchScope::user, propertyList, folders.home + "/Library/LaunchAgents"},
          {LaunchScope::allUsers, propertyList, root + "/Library/LaunchAgents"},
          {LaunchScope::system, propertyList, root + "/Library/LaunchDaemons"}};
}

std::vector<LaunchFolder> linuxLaunchFolders(const UserFolders& folders, const std::string& root) {
  using enum LaunchFormat;
  return {{LaunchScope::user, desktopEntry, folders.configHome + "/autostart"},
          {LaunchScope::user, systemdService, folders.configHome + "/systemd/user"},
          {LaunchScope::allUsers, desktopEntry, root + "/etc/xdg/autostart"},
          {LaunchScope::allUsers, systemdService, root + "/etc/systemd/user"},
          {LaunchScope::system, systemdService, root + "/etc/systemd/system"}};
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
      if (folder.format == LaunchFormat::systemdService) *bytes += dropIns(path);
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
