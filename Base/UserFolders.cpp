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

std::string withoutTrailingSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

/// Of a text that names a folder which can be somebody's own.
std::optional<std::string> homeNamed(const std::optional<std::string>& text) {
  if (!text || !text->starts_with('/')) return std::nullopt;
  const auto end = text->find_last_not_of('/');
  return end == std::string::npos ? std::nullopt : std::optional(text->substr(0, end + 1));
}

std::string homeFolder(const Environment& environment) {
  return homeNamed(environment("HOME")).value_or(UserFolders::noHome);
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

std::optional<std::string> passwordHome() {
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> texts(16 << 10);
  if (getpwuid_r(geteuid(), &entry, texts.data(), texts.size(), &found) != 0 || !found || !found->pw_dir)
    return std::nullopt;
  return homeNamed(std::string(found->pw_dir));
}

Environment withHome(Environment environment, const std::function<std::optional<std::string>()>& home) {
  if (homeNamed(environment("HOME"))) return environment;
  return [environment = std::move(environment), told = homeNamed(home())](std::string_view name) {
    return name == "HOME" ? told : environment(name);
  };
}

UserFolders linuxUserFolders(const Environment& environment) {
  UserFolders folders;
  folders.home = homeFolder(environment);
  const auto base = [&](const char* variable, const char* fallback) {
    const auto value = environment(variable);
    return value && value->starts_with('/') ? withoutTrailingSlash(*value) : folders.home + fallback;
  };
  folders.dataHome = base("XDG_DATA_HOME", "/.local/share");
  folders.configHome = base("XDG_CONFIG_HOME", "/.config");
  folders.cacheHome = base("XDG_CACHE_HOME", "/.cache");
  if (holds(folders.cacheHome, folders.home)) folders.cacheHome = folders.home + "/.cache";
  folders.data = folders.dataHome + "/korvell";
  folders.config = folders.configHome + "/korvell";
  if (const auto runtime = environment("XDG_RUNTIME_DIR"); runtime && runtime->starts_with('/'))
    folders.runtime = withoutTrailingSlash(*runtime) + "/korvell";
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
  if (const auto temporary = environment("TMPDIR"); temporary && temporary->starts_with('/'))
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
