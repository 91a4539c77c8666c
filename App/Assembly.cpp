#include "App/Assembly.h"

#include "Base/SystemQueue.h"

#include <filesystem>

namespace korvell {

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
  if (host_.processes) subjects.devServers = makeDevServerScanner();
  subjects.history = history;
  subjects.zone = &zone_;
  subjects.launchItems = host_.launchItems.get();
  subjects.table = host_.processes.get();
  subjects.control = host_.processControl.get();
  return std::make_unique<Sampler>(systemQueueFactory()(Sampler::queueLabel), *host_.machine,
                                   std::move(subjects));
}

} // namespace korvell
