#include "Platform/macOS/MacLaunchItems.h"

#include "Base/Localization.h"
#include "Platform/Formats/LaunchJobs.h"

namespace korvell {

namespace {

constexpr const char* launchctl = "/bin/launchctl";
constexpr Seconds patience{3};

} // namespace

LoadedJobs MacLaunchItems::loadedJobs() {
  const auto listing = run_(launchctl, {"list"}, patience, {});
  ManagedJobs jobs;
  if (listing && !listing->timedOut)
    jobs.loaded = parseLaunchJobs(listing->output);
  else
    jobs.silence = localized("launchctl did not answer.");
  return {.user = jobs, .system = jobs};
}

Outcome MacLaunchItems::stop(const LaunchJob& job) {
  run_(launchctl, {"bootout", "gui/" + std::to_string(user_) + "/" + job.label}, patience, {});
  return success();
}

} // namespace korvell
