#include "Base/UserFolders.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace korvell {

Environment processEnvironment() {
  return [](std::string_view name) -> std::optional<std::string> {
    const char* value = std::getenv(std::string(name).c_str());
    if (!value || !*value) return std::nullopt;
    return std::string(value);
  };
}

namespace {

/// Without ".", ".." and doubled slashes, but with one at the end.
std::string plainFolder(const std::string& path) {
  auto text = std::filesystem::path(path).lexically_normal().string();
  while (text.ends_with('/')) text.pop_back(); // the library leaves "//" as it is
  return text + "/";
}

/// The folder that a text names, without a slash at its end; nothing for a relative one and for the root,
/// however it is spelt.
std::optional<std::string> namedFolder(const std::optional<std::string>& text) {
  if (!text || !text->starts_with('/') || plainFolder(*text) == "/") return std::nullopt;
  return text->substr(0, text->find_last_not_of('/') + 1);
}

std::string homeFolder(const Environment& environment) {
  return namedFolder(environment("HOME")).value_or(UserFolders::noHome);
}

/// True when both, without "." and "..", are the same folder or the second lies below the first.
bool holds(const std::string& folder, const std::string& inside) {
  return plainFolder(inside).starts_with(plainFolder(folder));
}

} // namespace

std::optional<std::string> passwordHome() {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> texts(16 << 10);
  if (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) != 0 || !found || !found->pw_dir)
    return std::nullopt;
  return namedFolder(std::string(found->pw_dir));
}

Environment withHome(Environment environment, const std::function<std::optional<std::string>()>& home) {
  if (namedFolder(environment("HOME"))) return environment;
  return [environment = std::move(environment), told = namedFolder(home())](std::string_view name) {
    return name == "HOME" ? told : environment(name);
  };
}

UserFolders linuxUserFolders(const Environment& environment) {
  UserFolders folders;
  folders.home = homeFolder(environment);
  const auto base = [&](const char* variable, const char* fallback) {
    return namedFolder(environment(variable)).value_or(folders.home + fallback);
  };
  folders.dataHome = base("XDG_DATA_HOME", "/.local/share");
  folders.configHome = base("XDG_CONFIG_HOME", "/.config");
  folders.cacheHome = base("XDG_CACHE_HOME", "/.cache");
  if (holds(folders.cacheHome, folders.home)) folders.cacheHome = folders.home + "/.cache";
  folders.data = folders.dataHome + "/korvell";
  folders.config = folders.configHome + "/korvell";
  if (const auto runtime = namedFolder(environment("XDG_RUNTIME_DIR")))
    folders.runtime = *runtime + "/korvell";
  return folders;
}

UserFolders macOSUserFolders(const Environment& environment) {
  UserFolders folders;
  folders.home = homeFolder(environment);
  folders.dataHome = folders.home + "/Library/Application Support";
  folders.configHome = folders.home + "/Library/Preferences";
  folders.cacheHome = folders.home + "/Library/Caches";
  folders.data = folders.dataHome + "/Korvell";
  folders.config = folders.data;
  if (const auto temporary = namedFolder(environment("TMPDIR"))) folders.runtime = *temporary + "/korvell";
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
