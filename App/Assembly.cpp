#include "App/Assembly.h"

#include "Base/SystemQueue.h"
#include "Base/UUID.h"
#include "Core/Health/AlertPosting.h"
#include "Core/Machine/LinuxOwners.h"
#include "Core/Machine/MacOwners.h"

#include <filesystem>

namespace korvell {

namespace {

/// What the helper may cost one cycle, and its connection the start.
constexpr Seconds helperTimeLimit{0.1};
constexpr Seconds helperStart{1};

std::unique_ptr<OwnerRules> ownerRules(Host& host) {
  if (host.system == SystemKind::macOS) return std::make_unique<MacOwners>(host.bundleInfo);
  if (!host.desktopFiles) return nullptr;
  return std::make_unique<LinuxOwners>(*host.desktopFiles, host.locale, host.user);
}

} // namespace

Assembly::Assembly(Host& host, const Clock& clock) : host_(host), clock_(clock), owners_(ownerRules(host)) {
  if (host.usageHelper) helper_ = std::make_unique<PrivilegedHelper>(*host.usageHelper, clock);
}

std::unique_ptr<ProcessSampler> Assembly::makeProcessSampler() {
  if (!host_.processes || !host_.applications || !owners_) return nullptr;
  PrivilegedRusage privileged;
  if (helper_) {
    helper_->prepare(helperStart);
    privileged = [this](const std::vector<ProcessID>& pids) {
      return helper_->rusage(pids, helperTimeLimit);
    };
  }
  return std::make_unique<ProcessSampler>(
      ProcessSampler::Services{*host_.processes, *host_.applications, *owners_, clock_},
      host_.machine->facts().logicalProcessors, std::move(privileged));
}

std::unique_ptr<DevServerScanner> Assembly::makeDevServerScanner() const {
  // Working directories are told without links, so the home folder is compared without them too.
  std::error_code error;
  auto home = std::filesystem::canonical(host_.folders.home, error).string();
  if (error) home = host_.folders.home;
  const auto exists = [](const std::string& path) {
    std::error_code ignored;
    return std::filesystem::exists(path, ignored);
  };
  const auto& tables = host_.bundleInfo ? macOSDevServerTables : linuxDevServerTables;
  return std::make_unique<DevServerScanner>(*host_.processes, tables, std::move(home), exists, clock_);
}

std::unique_ptr<Sampler> Assembly::makeSampler(HistoryStore* history) {
  Sampler::Subjects subjects;
  subjects.processes = makeProcessSampler();
  if (host_.processes) subjects.devServers = makeDevServerScanner();
  subjects.history = history;
  subjects.zone = host_.zone.get();
  subjects.launchItems = host_.launchItems.get();
  subjects.table = host_.processes.get();
  subjects.control = host_.processControl.get();
  subjects.applications = host_.applications.get();
  subjects.state = host_.state.get();
  if (history && host_.defaults && host_.notifications) {
    // Alerts and reports are the keeper's, whose sign is the history that it records.
    subjects.alerts = std::make_unique<AlertEngine>(
        AlertEngine::Services{*host_.defaults, *host_.notifications},
        std::string(owners_ ? owners_->systemGroup().key : ""), host_.machine->facts().logicalProcessors);
    subjects.defaults = host_.defaults.get();
    subjects.notifications = host_.notifications.get();
  }
  return std::make_unique<Sampler>(systemQueueFactory()(Sampler::queueLabel), *host_.machine,
                                   std::move(subjects));
}

std::unique_ptr<AIUsageStore> Assembly::makeAIUsageStore(Queue& main) {
  if (!host_.logFiles || !host_.defaults || !host_.notifications) return nullptr;
  const auto makeScanner = [this](Cancellation ending) {
    auto options = AIUsageScanner::defaults(host_.folders);
    options.cancellation = std::move(ending);
    return std::make_unique<AIUsageScanner>(std::move(options), *host_.logFiles, *host_.zone, clock_);
  };
  const auto postAlert = [this](const HealthAlert& alert) {
    return post(alert, *host_.defaults, *host_.notifications);
  };
  return std::make_unique<AIUsageStore>(
      main, systemQueueFactory(), clock_, makeScanner,
      PlanLimitAlerts::Seams{*host_.defaults, *host_.zone, randomUUID, postAlert});
}

} // namespace korvell
