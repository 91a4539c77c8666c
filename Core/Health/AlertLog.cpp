#include "Core/Health/AlertLog.h"

#include "Base/DatabaseFile.h"
#include "Base/Files.h"

#include <utility>

namespace korvell {

namespace {

constexpr std::size_t largest = 4 << 20;

} // namespace

AlertLog::AlertLog(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder)
    : clock_(clock), path_(folder + "/alerts.json"), queue_(makeQueue("Korvell.alerts")) {}

AlertLog::~AlertLog() {
  queue_->sync([] {});
}

std::vector<HealthAlert> AlertLog::load() const {
  const auto text = readFile(path_, largest);
  if (!text) return {};
  const auto kept = parseJSON(*text);
  const auto* list = kept ? kept->find("alerts") : nullptr;
  if (!list || !list->asArray()) {
    moveAside(path_, clock_.now());
    return {};
  }
  std::vector<HealthAlert> alerts;
  for (const Value& value : *list->asArray())
    if (HealthAlert alert; fromValue(value, alert)) alerts.push_back(std::move(alert));
  return alerts;
}

void AlertLog::keep(std::vector<HealthAlert> alerts) {
  queue_->async([path = path_, alerts = std::move(alerts)] {
    [[maybe_unused]] const bool written =
        replaceFile(path, dumpJSON(Value::object({{"alerts", toValue(alerts)}})) + "\n");
  });
}

} // namespace korvell
