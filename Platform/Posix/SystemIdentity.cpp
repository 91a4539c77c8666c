#include "Platform/Posix/SystemIdentity.h"

#include "Base/Files.h"
#include "Base/Text.h"

#include <array>
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace korvell {

namespace {

std::string releaseName() {
  constexpr std::string_view key = "PRETTY_NAME=";
  constexpr std::size_t most = 1 << 16;
  const auto text = readFile("/etc/os-release", most).value_or("");
  for (auto line : splitLines(text)) {
    if (!line.starts_with(key)) continue;
    line.remove_prefix(key.size());
    if (line.size() >= 2 && line.front() == '"') line = line.substr(1, line.size() - 2);
    return std::string(line);
  }
  return {};
}

void addWords(std::vector<std::string>& names, std::string_view text, std::string_view separators) {
  while (!text.empty()) {
    const auto end = std::min(text.find_first_of(separators), text.size());
    if (end > 0) names.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

void addUser(std::vector<std::string>& names) {
  passwd entry{};
  passwd* found = nullptr;
  std::array<char, 4096> buffer{};
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) return;
  if (found->pw_name) names.emplace_back(found->pw_name);
  if (found->pw_gecos) addWords(names, found->pw_gecos, " ,");
}

} // namespace

SystemIdentity systemIdentity() {
  SystemIdentity identity{.release = releaseName()};
  addUser(identity.names);
  if (utsname name{}; uname(&name) == 0) {
    identity.kernel = std::string(name.sysname) + " " + name.release + " " + name.machine;
    identity.names.emplace_back(name.nodename);
    addWords(identity.names, name.nodename, ".");
  }
  return identity;
}

} // namespace korvell
