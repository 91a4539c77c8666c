#pragma once
// Autostart entries and systemd services, and systemd's jobs through systemctl.

#include "Base/Shell.h"
#include "Platform/Posix/PosixLaunchItems.h"

namespace korvell {

class LinuxLaunchItems final : public PosixLaunchItems {
public:
  /// `root` stands before the paths that belong to no user.
  LinuxLaunchItems(const UserFolders& folders, CommandRunner run, const std::string& root = {})
      : PosixLaunchItems(linuxLaunchFolders(folders, root), linuxProgramPlaces(folders, root)),
        run_(std::move(run)) {}

  /// Empty on a system that systemd does not run.
  LoadedJobs loadedJobs() override;
  Outcome stop(const LaunchJob& job) override;
  void removed(const LaunchJob& job) override;

private:
  void systemctl(std::vector<std::string> arguments);

  CommandRunner run_;
};

} // namespace korvell
