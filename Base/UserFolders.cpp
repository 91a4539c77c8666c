#include "Base/UserFolders.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

namespace korvell {

Environment processEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const char* value = std::getenv(std::string(name).c_str());
    if (!value || !*value) return std::nullopt;
    return std::string(value);
  };
}

namespace {

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string homeFolder(const Environment& environment) {
  const auto home = environment("HOME");
  return home && home->starts_with('/') ? withoutTrailingSlash(*home) : "/";
}

std::string below(const std::string& folder, const char* path) {
  return folder == "/" ? path : folder + path;
}

/// True when both, without "." and "..", are the same folder or the second lies below the first.
bool holds(const std::string& folder, const std::string& inside) {
  const auto plain = [](const std::string& path) {
    auto text = std::filesystem::path(path).lexically_normal().string();
    return text.ends_with('/') ? text : text + "/";
  };
  return plain(inside).starts_with(plain(folder));
}

} // namespace

UserFolders linuxUserFolders(const Environment& environment) {
  UserFolders folders;
  folders.home = homeFolder(environment);
  const auto base = [&](const char* variable, const char* fallback) {
    const auto value = environment(variable);
    return value && value->starts_with('/') ? withoutTrailingSlash(*value) : below(folders.home, fallback);
  };
  folders.dataHome = base("XDG_DATA_HOME", "/.local/share");
  folders.configHome = base("XDG_CONFIG_HOME", "/.config");
  folders.cacheHome = base("XDG_CACHE_HOME", "/.cache");
  if (holds(folders.cacheHome, folders.home)) folders.cacheHome = below(folders.home, "/.cache");
  folders.data = folders.dataHome + "/korvell";
  folders.config = folders.configHome + "/korvell";
  if (const auto runtime = environment("XDG_RUNTIME_DIR"); runtime && runtime->starts_with('/'))
    folders.runtime = withoutTrailingSlash(*runtime) + "/korvell";
  return folders;
}

UserFolders macOSUserFolders(const Environment& environment) {
  UserFolders folders;
  folders.home = homeFolder(environment);
  folders.dataHome = below(folders.home, "/Library/Application Support");
  folders.configHome = below(folders.home, "/Library/Preferences");
  folders.cacheHome = below(folders.home, "/Library/Caches");
  folders.data = folders.dataHome + "/Korvell";
  folders.config = folders.data;
  if (const auto temporary = environment("TMPDIR"))
    folders.runtime = withoutTrailingSlash(*temporary) + "/korvell";
  return folders;
}

bool ensurePrivateFolder(const std::string& path) {
  for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
      struct stat info {};
      if (stat(folder.c_str(), &info) != 0) return false;
    }
    if (slash == std::string::npos) break;
  }
  struct stat info {};
  return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

} // namespace korvell
