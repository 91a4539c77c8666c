#include "Platform/macOS/MacLaunchItems.h"

#include "Platform/Formats/LaunchJobs.h"

namespace korvell {

namespace {

constexpr const char* launchctl = "/bin/launchctl";
constexpr Seconds patience{3};

} // namespace

LoadedJobs MacLaunchItems::loadedJobs() {
  const auto listing = run_(launchctl, {"list"}, patience);
  if (!listing || listing->timedOut) return {};
  const auto labels = parseLaunchJobs(listing->output);
  return {.ofUser = labels, .ofSystem = labels};
}

Outcome MacLaunchItems::stop(const LaunchJob& job) {
  run_(launchctl, {"bootout", "gui/" + std::to_string(user_) + "/" + job.label}, patience);
  return success();
}

} // namespace korvell
