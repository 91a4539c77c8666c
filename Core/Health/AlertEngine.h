#pragma once
// Watches what applications and the machine do over time and raises an alert when something stays bad.
//
// Lives on the sampler's queue. Holds an hour of samples for each application that runs (one in ten seconds,
// so 361 at most; what quits is forgotten at once), when each alert last fired, and when it last recorded and
// evaluated. All of it is in memory only: after a restart an alert may fire again. Time is the snapshots'
// own; samples from a future that the clock was set back from are forgotten.

#include "Base/UUID.h"
#include "Core/Health/HealthAlert.h"
#include "Core/Health/SampleWindow.h"
#include "Core/Machine/Models.h"
#include "Platform/Notifications.h"
#include "Platform/UserDefaults.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

class AlertEngine {
public:
  struct Services {
    const UserDefaults& defaults;
    Notifications& notifications;
    UUIDSource makeID = randomUUID;
  };

  /// `systemKey` is the key of the system's own group, which never alerts; `cores` the number of logical
  /// processors.
  AlertEngine(Services services, std::string systemKey, int cores);

  /// Takes the snapshot in and returns the alerts that it raises, each already posted as a notification.
  std::vector<HealthAlert> evaluate(const SystemSnapshot& snapshot);

private:
  struct App {
    std::string name;
    std::optional<std::string> bundlePath;
    SampleWindow window;
    Date seen;
  };
  class Round;

  void record(const SystemSnapshot& snapshot);

  Services services_;
  std::string systemKey_;
  int cores_;
  std::map<std::string, App, std::less<>> apps_; ///< by AppUsage::id
  std::map<std::string, Date> lastFired_;        ///< by alert key
  Date lastRecorded_ = Date::distantPast();
  Date lastEvaluated_ = Date::distantPast();
};

} // namespace korvell
