#pragma once
// A world of launch files. `existing` holds the paths of everything that exists; `log` records what was asked
// to stop and told as removed, in order.

#include "Platform/LaunchItems.h"

namespace korvell {

class FakeLaunchItems final : public LaunchItems {
public:
  std::vector<LaunchFile> launchFiles;
  LoadedJobs jobs;
  std::set<std::string> existing;
  ProgramPlaces programPlaces{.folders = {"/usr/local/bin", "/usr/bin"},
                              .flatpakRoots = {"/var/lib/flatpak", "/home/me/.local/share/flatpak"}};
  std::optional<std::string> protection; ///< why files can't be removed
  std::vector<std::string> log;

  std::vector<LaunchFile> files() override { return launchFiles; }
  LoadedJobs loadedJobs() override { return jobs; }
  bool isMissing(const std::string& path) override { return !existing.contains(path); }
  const ProgramPlaces& places() const override { return programPlaces; }
  Outcome stop(const LaunchJob& job) override {
    if (protection) return Failure{*protection};
    log.push_back("stop " + job.label);
    return success();
  }
  void removed(const LaunchJob& job) override { log.push_back("removed " + job.path); }
};

} // namespace korvell
