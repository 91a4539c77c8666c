#include "App/Assembly.h"

#include "Base/SystemQueue.h"
#include "Base/UUID.h"
#include "Core/Health/AlertPosting.h"
#include "Core/Machine/LinuxOwners.h"
#include "Core/Machine/MacOwners.h"
#include "Core/Storage/StorageHost.h"
#include "Shared/WidgetSnapshot.h"

#include <filesystem>

namespace korvell {

namespace {

/// What the helper may cost one cycle, and its connection the start.
constexpr Seconds helperTimeLimit{0.1};
constexpr Seconds helperStart{1};

} // namespace

std::unique_ptr<OwnerRules> makeOwnerRules(Host& host) {
  if (host.system == SystemKind::macOS) return std::make_unique<MacOwners>(host.bundleInfo);
  return std::make_unique<LinuxOwners>(*host.desktopFiles, host.locale, host.user);
}

std::string widgetDocument(const Host& host) {
  return host.system == SystemKind::macOS ? WidgetShared::sandboxedSnapshotURL(passwordHome(), host.folders)
                                          : WidgetShared::snapshotURL(host.folders);
}

Assembly::Assembly(Host& host, const Clock& clock)
    : host_(host), clock_(clock), owners_(makeOwnerRules(host)) {
  if (host.usageHelper) helper_ = std::make_unique<PrivilegedHelper>(*host.usageHelper, clock);
}

void Assembly::helperChanged() {
  if (helper_) helper_->statusChanged();
}

std::unique_ptr<ProcessSampler> Assembly::makeProcessSampler() {
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
  const auto isDesktopProgram = [owners = owners_.get()](const std::string& executable) {
    return owners && owners->isDesktopProgram(executable);
  };
  const auto& tables = host_.bundleInfo ? macOSDevServerTables : linuxDevServerTables;
  return std::make_unique<DevServerScanner>(*host_.processes, tables, std::move(home), exists,
                                            isDesktopProgram, clock_);
}

std::unique_ptr<Sampler> Assembly::makeSampler(HistoryStore* history) {
  std::optional<Sampler::Keeping> keeping;
  if (history)
    keeping.emplace(Sampler::Keeping{
        *history, *host_.zone,
        std::make_unique<AlertEngine>(AlertEngine::Services{*host_.defaults, *host_.notifications},
                                      std::string(owners_->systemGroup().key),
                                      host_.machine->facts().logicalProcessors),
        *host_.defaults, *host_.notifications});
  return std::make_unique<Sampler>(
      systemQueueFactory()(Sampler::queueLabel), *host_.machine,
      Sampler::Subjects{makeProcessSampler(), makeDevServerScanner(), *host_.launchItems, *host_.state,
                        std::make_unique<SensorsReader>(host_.temperatures), *host_.peripherals},
      std::move(keeping));
}

AppModel::Seams Assembly::seams() {
  return {*host_.state,       *host_.defaults, *host_.notifications, quitServices(),
          *host_.launchItems, *host_.trash,    systemQueueFactory()};
}

std::unique_ptr<AppModel> Assembly::makeKeepingModel(Queue& main, const Attention& attention,
                                                     AlertLog::Tell tellAlertTrouble) {
  auto history = std::make_unique<HistoryStore>(systemQueueFactory(), clock_, host_.folders.data);
  auto sampler = makeSampler(history.get());
  const auto tell = [&main, heard = std::move(tellAlertTrouble)](const Trouble& trouble) {
    if (heard) main.async([heard, trouble] { heard(trouble); });
  };
  auto widgets = std::make_unique<WidgetPublisher>(
      main, WidgetPublisher::Seams{*host_.widgetCenter, systemQueueFactory(), widgetDocument(host_),
                                   std::string(owners_->systemGroup().name)});
  return std::make_unique<AppModel>(
      main,
      AppModel::Parts{std::move(history), std::move(sampler), makeAIUsageStore(main),
                      std::make_unique<AlertLog>(systemQueueFactory(), clock_, host_.folders.data, tell),
                      std::move(widgets)},
      attention, seams());
}

std::unique_ptr<AppModel> Assembly::makeWatchingModel(Queue& main, const Attention& attention) {
  auto history =
      std::make_unique<HistoryStore>(systemQueueFactory(), clock_, host_.folders.data, HistoryAccess::reader);
  auto own = seams();
  return std::make_unique<AppModel>(main, AppModel::Parts{std::move(history), makeSampler(nullptr)},
                                    attention,
                                    AppModel::Seams{own.state, own.defaults, silent_, own.processes,
                                                    own.launchItems, own.trash, own.makeQueue});
}

namespace {

struct OwnedStorage {
  std::unique_ptr<Queue> queue;
  std::unique_ptr<StorageScanner> scanner; ///< ends before its queue
};

} // namespace

std::function<StorageScanner&()> Assembly::lateStorageScanner(Queue& main) {
  return [this, &main, owned = std::make_shared<OwnedStorage>()]() -> StorageScanner& {
    if (!owned->scanner) {
      owned->queue = utilityQueueFactory()("Korvell.storage");
      owned->scanner = std::make_unique<StorageScanner>(makeStorageWork(host_, clock_), *host_.defaults, main,
                                                        *owned->queue);
    }
    return *owned->scanner;
  };
}

std::unique_ptr<ModelActions> Assembly::makeActions(Queue& main, std::function<AppModel&()> model,
                                                    std::function<StorageScanner&()> storage) {
  return std::make_unique<ModelActions>(
      main, ModelActions::Parts{std::move(model), std::move(storage), *host_.defaults, systemQueueFactory()});
}

std::unique_ptr<AIUsageStore> Assembly::makeAIUsageStore(Queue& main) {
  if (!host_.logFiles) return nullptr;
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
