#pragma once
// A world of launch files. `existing` holds the paths of everything that exists; `log` records what was asked
// to stop and told as removed, in order, `asked` about whom the managers were asked. What is told as removed
// is gone.

#include "Platform/LaunchItems.h"

namespace korvell {

class FakeLaunchItems final : public LaunchItems {
public:
  std::vector<LaunchFile> launchFiles;
  LoadedJobs jobs;
  std::map<std::string, EffectiveJob> effectiveJobs; ///< by path
  std::set<std::string> existing;
  ProgramPlaces programPlaces{.folders = {"/usr/local/bin", "/usr/bin"},
                              .flatpakRoots = {"/var/lib/flatpak", "/home/me/.local/share/flatpak"}};
  std::optional<std::string> protection; ///< why files can't be removed
  std::vector<std::string> log, asked;

  LaunchFile& addUnit(LaunchScope scope, const std::string& path, const std::string& program) {
    launchFiles.push_back({.scope = scope,
                           .format = LaunchFormat::systemdService,
                           .path = path,
                           .bytes = "[Service]\nExecStart=" + program + "\n[Install]\nWantedBy=x\n",
                           .location = path,
                           .identity = {1, launchFiles.size() + 1}});
    return launchFiles.back();
  }

  std::vector<LaunchFile> files() override { return launchFiles; }
  LoadedJobs loadedJobs() override { return jobs; }
  std::map<std::string, EffectiveJob> effective(const std::vector<LaunchJob>& about) override {
    std::map<std::string, EffectiveJob> told;
    for (const auto& job : about) {
      asked.push_back(job.label);
      if (const auto known = effectiveJobs.find(job.path); known != effectiveJobs.end()) told.insert(*known);
    }
    return told;
  }
  bool isMissing(const std::string& path) override { return !existing.contains(path); }
  const ProgramPlaces& places() const override { return programPlaces; }
  Outcome stop(const LaunchJob& job) override {
    if (protection) return Failure{*protection};
    log.push_back("stop " + job.label);
    return success();
  }
  void removed(const LaunchJob& job) override {
    log.push_back("removed " + job.path);
    std::erase_if(launchFiles, [&](const LaunchFile& file) { return file.path == job.path; });
  }
};

} // namespace korvell
