#include "Core/DevServers/DevServerRules.h"

#include "Base/Text.h"

#include <algorithm>
#include <unordered_set>

namespace korvell {

namespace {

constexpr std::string_view everywhereInfrastructure[] = {"ssh",
                                                         "sshd",
                                                         "ssh-agent",
                                                         "autossh",
                                                         "mosh-server",
                                                         "limactl",
                                                         "lima",
                                                         "colima",
                                                         "qemu-system-aarch64",
                                                         "qemu-system-x86_64",
                                                         "vfkit",
                                                         "krunkit",
                                                         "gvproxy",
                                                         "socket_vmnet",
                                                         "vpnkit",
                                                         "com.docker.backend",
                                                         "com.docker.vpnkit",
                                                         "orbstack",
                                                         "orbstack-helper",
                                                         "tailscaled",
                                                         "cloudflared",
                                                         "ngrok",
                                                         "frpc",
                                                         "wireguard-go",
                                                         "openvpn",
                                                         "tor",
                                                         "privoxy"};

constexpr std::string_view macOSPrefixes[] = {"/System/", "/usr/lib", "/usr/sbin", "/Library"};
constexpr std::string_view macOSParts[] = {".app/"};

// Java, PostgreSQL and others are installed below /usr/lib, so only the system's own corners are skipped.
constexpr std::string_view linuxPrefixes[] = {"/usr/lib/systemd/", "/usr/libexec/", "/usr/sbin/", "/sbin/"};
constexpr std::string_view linuxInfrastructure[] = {
    "docker-proxy", "rootlessport", "slirp4netns", "passt",    "pasta",  "pasta.avx2", "conmon",
    "virtiofsd",    "qemu-kvm",     "sshfs",       "dnsmasq",  "rclone", "syncthing",  "kdeconnectd",
    "wg-quick",     "dropbear",     "containerd",  "dockerd",  "podman", "crosvm",     "cupsd",
    "pulseaudio",   "pipewire",     "Xvfb",        "Xwayland", "x11vnc", "gpg-agent",  "dbus-daemon"};

constexpr std::string_view projectMarkers[] = {
    ".git",       "package.json", "pyproject.toml", "requirements.txt", "go.mod",
    "Cargo.toml", "Gemfile",      "composer.json",  "deno.json",        "mix.exs"};

constexpr std::string_view runtimeLabels[] = {"node",  "bun",    "deno",  "python", "ruby",
                                              "java",  "php",    "beam",  "dotnet", "postgres",
                                              "redis", "mysqld", "docker"};

bool contains(std::span<const std::string_view> names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string parentFolder(const std::string& path) { return path.substr(0, path.rfind('/')); }

} // namespace

const DevServerTables macOSDevServerTables{macOSPrefixes, macOSParts, {}};
const DevServerTables linuxDevServerTables{linuxPrefixes, {}, linuxInfrastructure};

bool isFrameworkPython(std::string_view executable) {
  return executable.find("/Python.app/Contents/MacOS/") != std::string_view::npos;
}

bool isSkippedExecutable(std::string_view executable, const DevServerTables& tables) {
  if (isFrameworkPython(executable)) return false;
  return std::any_of(tables.skippedPrefixes.begin(), tables.skippedPrefixes.end(),
                     [&](auto prefix) { return executable.starts_with(prefix); }) ||
         std::any_of(tables.skippedParts.begin(), tables.skippedParts.end(),
                     [&](auto part) { return executable.find(part) != std::string_view::npos; });
}

bool isInfrastructure(std::string_view processName, const DevServerTables& tables) {
  return contains(everywhereInfrastructure, processName) || contains(tables.infrastructure, processName);
}

std::string runtimeLabel(std::string_view processName) {
  const auto lower = lowercased(processName);
  for (auto label : runtimeLabels)
    if (lower.starts_with(label)) return std::string(label);
  return std::string(processName);
}

ChildrenByPID childrenOf(const ParentsByPID& parents) {
  ChildrenByPID children;
  for (const auto& [pid, parent] : parents) children[parent].push_back(pid);
  return children;
}

std::vector<ProcessID> descendants(ProcessID pid, const ChildrenByPID& children) {
  std::vector<ProcessID> found{pid};
  // Parents are read one after the other, so with reused ids they may form a circle.
  std::unordered_set<ProcessID> seen{pid};
  for (std::size_t next = 0; next < found.size(); ++next) {
    const auto entry = children.find(found[next]);
    if (entry == children.end()) continue;
    for (ProcessID child : entry->second)
      if (seen.insert(child).second) found.push_back(child);
  }
  return found;
}

bool isDesktopLayout(const std::string& executable, const FileExists& exists) {
  if (executable.starts_with("/tmp/.mount_")) return true;
  if (executable.starts_with("/app/") && !exists(executable)) return true;
  const auto resources = parentFolder(executable) + "/resources/app";
  return exists(resources + "/package.json") || exists(resources + ".asar");
}

ProjectFolders projectFolders(const std::string& directory, const std::string& home,
                              const FileExists& exists) {
  ProjectFolders folders;
  for (std::string folder = directory; !folder.empty() && folder != home; folder = parentFolder(folder)) {
    const auto has = [&](std::string_view marker) { return exists(folder + "/" + std::string(marker)); };
    const bool isRepository = has(projectMarkers[0]);
    if (folders.service.empty() &&
        (isRepository || std::any_of(std::begin(projectMarkers) + 1, std::end(projectMarkers), has)))
      folders.service = folder;
    if (isRepository) {
      folders.project = folder;
      return folders;
    }
  }
  if (folders.service.empty()) folders.service = directory;
  folders.project = folders.service;
  return folders;
}

std::vector<DevServer> idleServers(const std::vector<DevProject>& projects, Date now) {
  std::vector<DevServer> idle;
  for (const DevProject& project : projects)
    for (const DevServer& server : project.servers)
      if (isIdle(server, now)) idle.push_back(server);
  return idle;
}

bool isSameServer(const DevServer& a, const DevServer& b) {
  return a.pid == b.pid && rfc3339(a.startedAt) == rfc3339(b.startedAt);
}

std::vector<DevServer> stillIdle(const std::vector<DevServer>& before,
                                 const std::vector<DevProject>& projects, Date now) {
  auto idle = idleServers(projects, now);
  std::erase_if(idle, [&](const DevServer& server) {
    return std::ranges::none_of(before,
                                [&](const DevServer& earlier) { return isSameServer(earlier, server); });
  });
  return idle;
}

KORVELL_CONVERT_HERE(std::vector<DevProject>);

} // namespace korvell
