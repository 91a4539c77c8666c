#include "Platform/Linux/LinuxUsageHelper.h"

#include "Base/Files.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Platform/Linux/HelperSocket.h"
#include "Platform/Linux/HelperUnits.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvell {

namespace {

constexpr const char* groupName = "korvell";
constexpr const char* userName = "korvell-helper"; ///< whom it becomes without systemd
constexpr const char* socketName = "korvell-helper.socket";
constexpr const char* serviceName = "korvell-helper.service";
constexpr const char* socketPath = "/run/korvell-helper.sock";
constexpr const char* socketUnit = "/etc/systemd/system/korvell-helper.socket";
constexpr const char* serviceUnit = "/etc/systemd/system/korvell-helper.service";
constexpr const char* packagedUnit = "/usr/lib/systemd/system/korvell-helper.socket";
constexpr const char* copiedProgram = "/usr/local/libexec/korvell-helper";
constexpr const char* packagedProgram = "/usr/libexec/korvell/korvell-helper"; ///< only root can change it
constexpr const char* systemdRunning = "/run/systemd/system";
constexpr std::array programFolders = {"/usr/bin/", "/bin/", "/usr/sbin/", "/sbin/"};
constexpr Seconds patience{30};
constexpr std::size_t largestProgram = std::size_t{256} << 20;

bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool install(const std::string& path, std::string_view bytes, mode_t mode) {
  const auto folder = std::filesystem::path(path).parent_path();
  std::error_code error;
  if (std::filesystem::create_directories(folder, error))
    chmod(folder.c_str(), 0755); // whatever the umask is
  return !error && replaceFile(path, bytes) && chmod(path.c_str(), mode) == 0;
}

std::string withProgram(std::string unit, std::string_view program) {
  constexpr std::string_view placeholder = "@HELPER@";
  return unit.replace(unit.find(placeholder), placeholder.size(), program);
}

} // namespace

LinuxUsageHelper::Sources LinuxUsageHelper::systemSources(const Environment& environment) {
  Sources sources;
  std::error_code error;
  sources.ownFolder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
  sources.environment = environment;
  sources.isAdministrator = [] { return geteuid() == 0; };
  sources.userName = [](std::uint32_t id) {
    const auto* user = getpwuid(id);
    return std::string(user ? user->pw_name : "");
  };
  sources.groupExists = [] { return getgrnam(groupName) != nullptr; };
  return sources;
}

UsageHelperStatus LinuxUsageHelper::status() {
  // A socket in the file system says little: it stays when the process behind it was killed.
  switch (HelperSocket::probe(at(socketPath))) {
  case HelperSocket::Answer::listening:
    return UsageHelperStatus::enabled;
  case HelperSocket::Answer::forbidden:
    return UsageHelperStatus::notPermitted;
  case HelperSocket::Answer::nobody:
    break;
  }
  return isOffered() || exists(at(socketUnit)) || exists(at(packagedUnit)) ? UsageHelperStatus::notEnabled
                                                                           : UsageHelperStatus::notFound;
}

std::shared_ptr<UsageHelperConnection> LinuxUsageHelper::connect(std::function<void()> lost) {
  return HelperSocket::connect(at(socketPath), std::move(lost));
}

bool LinuxUsageHelper::isInstalled() { return exists(at(socketUnit)) || exists(at(copiedProgram)); }

std::string LinuxUsageHelper::group() { return sources_.groupExists() ? groupName : ""; }

bool LinuxUsageHelper::isOffered() { return exists(ownHelper()); }

std::string LinuxUsageHelper::ownHelper() const {
  const std::filesystem::path own = sources_.ownFolder;
  if (auto beside = own / "korvell-helper"; exists(beside)) return beside;
  return own.parent_path() / "libexec/korvell/korvell-helper";
}

Outcome LinuxUsageHelper::checkAdministrator(const std::string& withoutSystemd) const {
  if (!exists(at(systemdRunning))) return Failure{withoutSystemd};
  if (!sources_.isAdministrator())
    return Failure{localized("This takes an administrator: run the command with sudo.")};
  return success();
}

Outcome LinuxUsageHelper::step(const std::string& name, const std::vector<std::string>& arguments) const {
  for (const char* folder : programFolders) {
    const auto result = sources_.run(folder + name, arguments, patience, {});
    if (!result) continue;
    if (result->exitStatus == 0 && !result->timedOut) return success();
    std::string command = name;
    for (const auto& argument : arguments) command += " " + argument;
    return Failure{localized("“{command}” failed with exit code {code}.",
                             {{"command", command}, {"code", std::to_string(result->exitStatus)}})};
  }
  return Failure{localized("{program} is missing on this system.", {{"program", name}})};
}

Outcome LinuxUsageHelper::installFiles() const {
  const auto own = ownHelper();
  const auto bytes = readFile(own, largestProgram);
  if (!bytes) return Failure{localized("Helper missing from this copy of Korvell")};
  const bool isPackaged = own == at(packagedProgram);
  const auto service = withProgram(helperServiceUnit, isPackaged ? packagedProgram : copiedProgram);
  const bool installed = (isPackaged || install(at(copiedProgram), *bytes, 0755)) &&
                         install(at(socketUnit), helperSocketUnit, 0644) &&
                         install(at(serviceUnit), service, 0644);
  if (!installed) return Failure{localized("The helper's files could not be written.")};
  return success();
}

/// The group, and in it the user who became root for this command.
Outcome LinuxUsageHelper::admitUsers() const {
  if (!sources_.groupExists())
    if (auto made = step("groupadd", {"--system", groupName}); !made) return made;
  auto caller = sources_.environment("SUDO_UID");
  if (!caller) caller = sources_.environment("PKEXEC_UID");
  const auto id = caller ? parseInteger<std::uint32_t>(*caller) : std::nullopt;
  const auto name = id && *id != 0 ? sources_.userName(*id) : std::string();
  return name.empty() ? success() : step("usermod", {"--append", "--groups", groupName, name});
}

Outcome LinuxUsageHelper::enable() {
  const auto byHand =
      localized("This system does not run systemd. Make the group {group} and the user {user}, "
                "and have your supervisor run, as root: korvell-helper --socket {path}",
                {{"group", groupName}, {"user", userName}, {"path", socketPath}});
  if (auto allowed = checkAdministrator(byHand); !allowed) return allowed;
  if (auto admitted = admitUsers(); !admitted) return admitted;
  if (auto installed = installFiles(); !installed) return installed;
  if (auto loaded = step("systemctl", {"daemon-reload"}); !loaded) return loaded;
  return step("systemctl", {"enable", "--now", socketName});
}

Outcome LinuxUsageHelper::disable() {
  const auto byHand =
      localized("This system does not run systemd. End the helper where your supervisor runs it.");
  if (auto allowed = checkAdministrator(byHand); !allowed) return allowed;
  const bool hasUnits = exists(at(socketUnit)) || exists(at(packagedUnit));
  if (!hasUnits && !isInstalled()) return success();
  if (hasUnits) {
    if (auto stopped = step("systemctl", {"disable", "--now", socketName}); !stopped) return stopped;
    if (auto stopped = step("systemctl", {"stop", serviceName}); !stopped) return stopped;
  }
  for (const char* path : {socketUnit, serviceUnit, copiedProgram}) std::remove(at(path).c_str());
  return step("systemctl", {"daemon-reload"});
}

} // namespace korvell
