#pragma once
// A model that is set by hand, for what pages of rows show.

#include "App/Model.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

/// What a model is made of, and so before it.
struct ListWorld {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  FakeUserDefaults defaults;
};

struct ListModel : ListWorld, Model {
  ListModel() : Model(*main, defaults) { snapshot.set(SystemSnapshot::empty(now)); }

  const Date now = *parseRFC3339("2026-11-19T15:42:00Z"); // a Thursday
  FakeTimeZone zone;

  struct Times {
    double idle = 0, running = 182; ///< minutes
  };
  DevServer server(std::string name, std::string project, std::string directory, std::string runtime,
                   std::vector<int> ports, double megabytes, double cpu, Times times) const {
    const int pid = ports.front();
    return {.pid = pid,
            .name = std::move(name),
            .project = std::move(project),
            .directory = std::move(directory),
            .runtime = std::move(runtime),
            .ports = std::move(ports),
            .memory = std::uint64_t(megabytes * 1'048'576),
            .cpu = cpu,
            .startedAt = now - Seconds{times.running * 60},
            .lastActive = now - Seconds{times.idle * 60}};
  }
  HealthAlert alert(HealthAlert::Kind kind, std::string title, std::string detail,
                    const std::string& date) const {
    return {.id = date,
            .kind = kind,
            .appName = {},
            .bundlePath = {},
            .title = std::move(title),
            .detail = std::move(detail),
            .date = *parseRFC3339(date)};
  }
  void tick() { cycle.set(*cycle + 1); }
};

} // namespace korvell
