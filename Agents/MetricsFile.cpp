#include "Agents/MetricsFile.h"

#include "Agents/Metrics.h"
#include "App/SettingsCheck.h"
#include "Base/Files.h"
#include "Base/Localization.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace korvell {

MetricsFile::MetricsFile(Queue& main, AppModel& model, const UserDefaults& defaults,
                         const QueueFactory& makeQueue, std::string version, Tell tell)
    : main_(main), model_(model), defaults_(defaults), version_(std::move(version)), tell_(std::move(tell)),
      disk_(makeQueue("Korvell.metrics")), cycles_(model.cycle.observe([this](std::int64_t) { cycle(); })) {}

void MetricsFile::cycle() {
  const Seconds now = main_.clock().monotonic();
  if (isWriting_ || !*model_.hasSample || (last_ && now - *last_ < interval)) return;
  const auto path = defaults_.string(metricsFileKey);
  // A value that is no such path is named by the settings' check.
  if (!path || !settingRefusal(metricsFileKey, Value(*path)).empty()) return;
  last_ = now;
  isWriting_ = true;
  auto reading = metricsReading(model_, main_.clock().now());
  reading.keeper = getpid();
  addKept(reading, defaults_);
  disk_->async([&main = main_, watch = life_.watch(), path = *path,
                text = metricsText(reading, MetricsFormat::prometheus, version_)] {
    const bool isWritten = replaceFile(path, text, Readers::everybody);
    std::string trouble = isWritten ? "" : std::strerror(errno);
    main.async([watch, path, trouble = std::move(trouble)] {
      if (auto* file = watch.get()) file->hear(path, trouble);
    });
  });
}

void MetricsFile::hear(const std::string& path, const std::string& trouble) {
  isWriting_ = false;
  const auto said = trouble.empty() ? "" : path + trouble;
  if (said == trouble_) return;
  trouble_ = said;
  if (!trouble.empty())
    tell_(troubleOf("The metrics could not be written to {path}: {reason}",
                    {{"path", path}, {"reason", trouble}}, trouble));
}

} // namespace korvell
