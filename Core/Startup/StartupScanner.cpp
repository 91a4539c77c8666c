#include "Core/Startup/StartupScanner.h"

#include "Core/Startup/LaunchFileRules.h"
#include "Platform/Formats/KeyFile.h"

#include <algorithm>
#include <tuple>

namespace korvell {

namespace {

bool isEntry(const StartupItem& item) { return item.plistPath.ends_with(".desktop"); }

/// As whoever runs it calls it.
std::string jobName(const StartupItem& item) {
  return isEntry(item) ? autostartUnitName(item.label) : item.label;
}

LaunchJob jobOf(const StartupItem& item) {
  return {.scope = item.scope, .path = item.plistPath, .label = item.label};
}

void addWhatIsKnown(StartupItem& item, const ManagedJobs& jobs) {
  item.isLoaded = jobs.loaded.contains(jobName(item));
  if (const auto known = jobs.enabled.find(item.label); !isEntry(item) && known != jobs.enabled.end())
    item.runsAtLoad = known->second;
}

bool isInUse(const EffectiveJob& job, LaunchItems& launchItems) {
  if (!job.isThisFile) return false; // what is known is another file's
  return job.isActive || job.looksElsewhere || job.programs.empty() ||
         !std::ranges::all_of(job.programs, [&](const auto& p) { return isProgramMissing(p, launchItems); });
}

/// Items whose program is missing are leftovers, unless whoever runs them has them in use: what else there is
/// beside a file it knows best.
void decide(const std::vector<StartupItem*>& items, LaunchItems& launchItems, const LoadedJobs& jobs) {
  if (items.empty()) return;
  std::vector<LaunchJob> asked;
  for (const auto* item : items)
    if (jobs.of(item->scope).silence.empty()) asked.push_back(jobOf(*item));
  const auto effective = launchItems.effective(asked);
  for (auto* item : items) {
    const auto told = effective.find(item->plistPath);
    const auto& manager = jobs.of(item->scope);
    item->isVouchedFor = told == effective.end() ? manager.mayRun || manager.active.contains(jobName(*item))
                                                 : isInUse(told->second, launchItems);
    item->isLeftover = !item->isVouchedFor;
  }
}

/// The file of an item as it is now; nothing when it has gone or no longer says what the item says.
std::optional<LaunchFile> unchangedFile(const StartupItem& item, LaunchItems& launchItems) {
  for (auto& file : launchItems.files()) {
    if (file.path != item.plistPath) continue;
    const auto now = readLaunchFile(file, launchItems);
    if (now && now->label == item.label && now->program == item.program && now->scope == item.scope)
      return std::move(file);
  }
  return std::nullopt;
}

/// Of a job that was stopped before its file turned out to stay.
Failure fileStayed(const LaunchFile& file, const std::string& reason) {
  // Only systemd is also told not to start it again.
  const auto text =
      file.format == LaunchFormat::systemdService
          ? localized("The job was disabled and stopped, but its file {path} is still there: ",
                      {{"path", file.path}})
          : localized("The job was stopped, but its file {path} is still there: ", {{"path", file.path}});
  return Failure{text + reason};
}

void sort(std::vector<StartupItem>& items) {
  std::ranges::stable_sort(items, [](const StartupItem& a, const StartupItem& b) {
    return std::tuple(!a.isLeftover, std::string_view(a.label)) <
           std::tuple(!b.isLeftover, std::string_view(b.label));
  });
}

} // namespace

std::vector<StartupItem> StartupScanner::scan(LaunchItems& launchItems) {
  const auto jobs = launchItems.loadedJobs();
  std::vector<StartupItem> items;
  for (const auto& file : launchItems.files()) {
    auto item = readLaunchFile(file, launchItems);
    if (!item) continue;
    addWhatIsKnown(*item, jobs.of(item->scope));
    items.push_back(std::move(*item));
  }
  std::vector<StartupItem*> doubtful;
  for (auto& item : items)
    if (isProgramMissing(item.program, launchItems)) doubtful.push_back(&item);
  decide(doubtful, launchItems, jobs);
  sort(items);
  return items;
}

bool StartupScanner::refreshLeftovers(std::vector<StartupItem>& items, LaunchItems& launchItems) {
  bool changed = false;
  std::vector<StartupItem*> doubtful;
  for (auto& item : items) {
    if (!isProgramMissing(item.program, launchItems)) {
      changed |= item.isLeftover;
      item.isLeftover = item.isVouchedFor = false;
    } else if (!item.isLeftover && !item.isVouchedFor) {
      doubtful.push_back(&item);
    }
  }
  if (!doubtful.empty()) decide(doubtful, launchItems, launchItems.loadedJobs());
  changed |= std::ranges::any_of(doubtful, &StartupItem::isLeftover);
  if (changed) sort(items);
  return changed;
}

std::string StartupScanner::confirmation(const StartupItem& item) {
  return localized("It launches {program} which no longer exists. The file goes to the Trash, so you can put "
                   "it back.",
                   {{"program", item.program.value_or(localized("a program"))}});
}

Outcome StartupScanner::remove(const StartupItem& item, LaunchItems& launchItems, Trash& trash) {
  if (!isProgramMissing(item.program, launchItems))
    return Failure{
        localized("The program of {label} exists. Only leftovers are removed.", {{"label", item.label}})};
  const auto file = unchangedFile(item, launchItems);
  if (!file) return Failure{localized("{path} has changed. Look at it again.", {{"path", item.plistPath}})};
  auto now = item;
  const auto jobs = launchItems.loadedJobs();
  if (const auto& manager = jobs.of(item.scope); manager.mayRun)
    return Failure{localized("{reason} Whether {label} is in use is not known, so it stays.",
                             {{"reason", manager.silence}, {"label", item.label}})};
  decide({&now}, launchItems, jobs);
  if (!now.isLeftover)
    return Failure{localized("{label} is in use. Only leftovers are removed.", {{"label", item.label}})};
  const auto job = jobOf(item);
  if (auto stopped = launchItems.stop(job); !stopped) return stopped;
  const auto moved = trash.move({{.path = file->location, .picked = file->identity}});
  if (moved.empty() || !moved.front())
    return fileStayed(*file, moved.empty() ? localized("The Trash did not answer.") : moved.front().reason());
  launchItems.removed(job);
  return success();
}

bool runsInsideApplication(const StartupItem& item) {
  return item.program && item.program->find(".app/") != std::string::npos;
}

KORVELL_CONVERT_HERE(std::vector<StartupItem>);

} // namespace korvell
