#pragma once
// The alerts that were raised, kept from one start to the next in "alerts.json" in the data folder: one
// object whose member "alerts" is the list, the newest first.
//
// Called on the main thread; written on a queue of its own, "Korvell.alerts", whole each time, so that a
// crash leaves the old list or the new one. An entry that can't be read, because a later version raised it,
// is skipped; a file that is not JSON is put aside as "alerts-damaged-DATE.json". What can't be written now
// is written with the next alert.

#include "Base/Queue.h"
#include "Core/Health/HealthAlert.h"

#include <memory>
#include <string>
#include <vector>

namespace korvell {

class AlertLog {
public:
  AlertLog(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder);
  ~AlertLog(); ///< waits for what is to be written
  AlertLog(const AlertLog&) = delete;
  AlertLog& operator=(const AlertLog&) = delete;

  /// What was kept; for the start, before anything is.
  std::vector<HealthAlert> load() const;
  /// The whole list, in place of what was kept.
  void keep(std::vector<HealthAlert> alerts);

private:
  const Clock& clock_;
  std::string path_;
  std::unique_ptr<Queue> queue_;
};

} // namespace korvell
