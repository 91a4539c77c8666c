#pragma once
// Autostart entries and systemd services. What is loaded, enabled, active and really started is asked of
// systemd over D-Bus; systemctl is started only to stop and disable what is to be removed.

#include "Base/Shell.h"
#include "Platform/Linux/ServiceManager.h"
#include "Platform/Posix/PosixLaunchItems.h"

namespace korvell {

class LinuxLaunchItems final : public PosixLaunchItems {
public:
  /// `searchPath` as in PATH; `root` stands before the paths that belong to no user.
  LinuxLaunchItems(const UserFolders& folders, CommandRunner run, BusAddresses buses,
                   std::string_view searchPath, const std::string& root = {})
      : PosixLaunchItems(linuxLaunchFolders(folders, root), linuxProgramPlaces(folders, searchPath, root)),
        run_(std::move(run)), buses_(std::move(buses)) {}

  LoadedJobs loadedJobs() override;
  std::map<std::string, EffectiveJob> effective(const std::vector<LaunchJob>& jobs) override;
  Outcome stop(const LaunchJob& job) override;
  void removed(const LaunchJob& job) override;

private:
  bool isShadowed(const LaunchJob& job) const;
  void systemctl(std::vector<std::string> arguments);

  CommandRunner run_;
  const BusAddresses buses_;
};

} // namespace korvell
