#include "Platform/Linux/LinuxLaunchItems.h"

#include "Base/Localization.h"
#include "Platform/Formats/KeyFile.h"

#include <unistd.h>

namespace korvell {

namespace {

constexpr const char* systemctlPath = "/usr/bin/systemctl";
constexpr Seconds listingPatience{2};   // the sampling loop waits
constexpr Seconds stoppingPatience{10}; // a service may take its time to end

std::string folderOf(const std::string& path) { return path.substr(0, path.rfind('/')); }

bool isAutostartEntry(const LaunchJob& job) { return job.path.ends_with(".desktop"); }

/// Which of systemd's managers knows the job.
std::string managerOf(const LaunchJob& job) {
  return job.scope == LaunchScope::system ? "--system" : "--user";
}

} // namespace

LoadedJobs LinuxLaunchItems::loadedJobs() {
  return {.user = askServiceManager(buses_.session, listingPatience),
          .system = askServiceManager(buses_.system, listingPatience)};
}

Outcome LinuxLaunchItems::stop(const LaunchJob& job) {
  if (access(folderOf(job.path).c_str(), W_OK | X_OK) != 0)
    return Failure{
        localized("Korvell may not remove {path}: that takes an administrator.", {{"path", job.path}})};
  // "--": a file's name may begin with a dash.
  if (isAutostartEntry(job)) {
    systemctl({"--user", "stop", "--", autostartUnitName(job.label)});
  } else {
    if (job.scope == LaunchScope::allUsers) systemctl({"--global", "disable", "--", job.label});
    systemctl({managerOf(job), "disable", "--now", "--", job.label});
  }
  return success();
}

void LinuxLaunchItems::removed(const LaunchJob& job) { systemctl({managerOf(job), "daemon-reload"}); }

void LinuxLaunchItems::systemctl(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "--no-ask-password"); // nobody would see the question
  run_(systemctlPath, arguments, stoppingPatience);
}

} // namespace korvell
