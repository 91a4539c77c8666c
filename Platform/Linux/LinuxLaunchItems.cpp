#include "Platform/Linux/LinuxLaunchItems.h"

#include "Base/Localization.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>
#include <sys/stat.h>
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

std::map<std::string, EffectiveJob> LinuxLaunchItems::effective(const std::vector<LaunchJob>& jobs) {
  std::vector<std::string> ofUser, ofSystem;
  for (const auto& job : jobs)
    if (!isAutostartEntry(job)) (job.scope == LaunchScope::system ? ofSystem : ofUser).push_back(job.path);
  auto told = askAboutServices(buses_.session, ofUser, listingPatience);
  told.merge(askAboutServices(buses_.system, ofSystem, listingPatience));
  return told;
}

/// A file of the same name goes before this one, the user's own before one for all users: what the manager
/// runs and has enabled under this name is that one's.
bool LinuxLaunchItems::isShadowed(const LaunchJob& job) const {
  const auto folder = std::ranges::find(folders(), folderOf(job.path), &LaunchFolder::path);
  if (folder == folders().end()) return false;
  for (const auto& searched : folder->searched) {
    if (searched == folder->path) return false;
    struct stat status {};
    if (lstat((searched + "/" + job.label).c_str(), &status) == 0) return true;
  }
  return false;
}

Outcome LinuxLaunchItems::stop(const LaunchJob& job) {
  if (access(folderOf(job.path).c_str(), W_OK | X_OK) != 0)
    return Failure{
        localized("Korvell may not remove {path}: that takes an administrator.", {{"path", job.path}})};
  if (isShadowed(job)) return success();
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
  run_(systemctlPath, arguments, stoppingPatience, {});
}

} // namespace korvell
