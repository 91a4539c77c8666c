#include "App/WidgetPublisher.h"

#include "App/WidgetDocument.h"
#include "Base/Files.h"
#include "Base/Localization.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr Seconds configurationInterval{1800};
constexpr Seconds writeInterval{60};
constexpr Seconds reloadInterval{900};
constexpr std::string_view english = "en";

/// Not worth a disk's waking: after a power cut the next minute brings another.
void write(const WidgetSnapshot& document, const std::string& path) {
  if (ensurePrivateFolder(path.substr(0, path.rfind('/')))) [[maybe_unused]]
    const bool isWritten = replaceFile(path, document.encoded(), Readers::owner, Flush::none);
}

/// What the tiles show, without the processes.
SystemSnapshot machineOf(const SystemSnapshot& snapshot) {
  SystemSnapshot machine;
  machine.date = snapshot.date;
  machine.cpu = snapshot.cpu;
  machine.memory = snapshot.memory;
  machine.disk = snapshot.disk;
  machine.network = snapshot.network;
  return machine;
}

/// What is said at once, in that language.
WidgetSnapshot documentIn(std::string_view code, HealthReport report, const std::vector<AppUsage>& apps,
                          std::string_view systemGroup) {
  const InLanguage speaking(code);
  std::ranges::for_each(report.insights, speakHere<Insight>);
  return {.score = report.score,
          .label = report.label(),
          .fixes = widgetFixes(report),
          .apps = widgetApps(apps, systemGroup)};
}

} // namespace

WidgetPublisher::WidgetPublisher(Queue& main, Seams seams)
    : main_(main), seams_(std::move(seams)), queue_(seams_.makeQueue(queueLabel)) {}

void WidgetPublisher::publish(const HealthReport& report, const SystemSnapshot& snapshot,
                              HistoryStore& history) {
  const Date now = main_.clock().now();
  checkConfigurations(now);
  if (!hasWidgets_ || !isDue(lastWrite_, writeInterval, now)) return;
  lastWrite_ = now;
  const bool reloads = isReloadNeeded(report, now);
  auto document = documentIn(english, report, snapshot.apps, seams_.systemGroup);
  document.date = now;
  for (const auto& language : installedLanguages())
    if (language.code != english)
      document.others.emplace(language.code,
                              documentIn(language.code, report, snapshot.apps, seams_.systemGroup));
  queue_->async([this, &history, reloads, document = std::move(document), machine = machineOf(snapshot)] {
    const InLanguage speaking(english);
    auto whole = document;
    whole.tiles = widgetTiles(machine, history);
    for (auto& [code, other] : whole.others) {
      const InLanguage speakingOther(code);
      other.tiles = widgetTiles(machine);
    }
    write(whole, seams_.path);
    if (reloads) seams_.center.reloadAllTimelines();
  });
}

void WidgetPublisher::checkConfigurations(Date now) {
  const auto stamp = seams_.center.stamp();
  if (stamp == checkedStamp_ && !isDue(lastConfigurationCheck_, configurationInterval, now)) return;
  lastConfigurationCheck_ = now;
  checkedStamp_ = stamp;
  seams_.center.currentConfigurations(
      [&main = main_, watch = life_.watch()](std::optional<std::size_t> count) {
        main.async([watch, count] {
          auto* publisher = watch.get();
          if (publisher && count) publisher->hasWidgets_ = *count > 0; // unanswered: as it was
        });
      });
}

/// Remembers the reload where one is needed.
bool WidgetPublisher::isReloadNeeded(const HealthReport& report, Date now) {
  auto content = widgetContentKey(report);
  if (content == lastReloadedContent_ || !isDue(lastReload_, reloadInterval, now)) return false;
  lastReload_ = now;
  lastReloadedContent_ = std::move(content);
  return true;
}

} // namespace korvell
