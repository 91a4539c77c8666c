#pragma once
// Launch agents and daemons, and launchd's jobs through launchctl.

#include "Base/Shell.h"
#include "Platform/Posix/PosixLaunchItems.h"

#include <sys/types.h>

namespace korvell {

class MacLaunchItems final : public PosixLaunchItems {
public:
  MacLaunchItems(const UserFolders& folders, CommandRunner run, uid_t user)
      : PosixLaunchItems(macOSLaunchFolders(folders), macOSProgramPlaces()), run_(std::move(run)),
        user_(user) {}

  /// Only the jobs of the user's own domain are listed: a daemon is never seen as loaded.
  LoadedJobs loadedJobs() override;
  /// Never a failure: the system asks for an administrator's password when the file's folder takes one.
  Outcome stop(const LaunchJob& job) override;
  void removed(const LaunchJob&) override {} // launchd has forgotten the job already

private:
  CommandRunner run_;
  uid_t user_;
};

} // namespace korvell
